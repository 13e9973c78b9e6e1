#pragma once

#include <QQuickFramebufferObject>
#include <QQuickItem>

#include <memory>

namespace zelvano {

class MpvCore;

/// Draws with OpenGL.
class MpvGlSurface : public QQuickFramebufferObject
{
    Q_OBJECT

public:
    MpvGlSurface(const std::shared_ptr<MpvCore> &core, QQuickItem *parent);

    Renderer *createRenderer() const override;

private:
    const std::shared_ptr<MpvCore> m_core;
};

/// Draws into memory: for the software scene graph, and for graphics that mpv does not draw with.
class MpvSoftwareSurface : public QQuickItem
{
    Q_OBJECT

public:
    MpvSoftwareSurface(const std::shared_ptr<MpvCore> &core, QQuickItem *parent);

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    const std::shared_ptr<MpvCore> m_core;
};

} // namespace zelvano
