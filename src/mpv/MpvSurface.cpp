#include "MpvSurface.h"

#include "MpvCanvas.h"
#include "MpvCore.h"

#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickOpenGLUtils>
#include <QQuickWindow>
#include <QSGSimpleTextureNode>

#include <array>

#include <mpv/render.h>
#include <mpv/render_gl.h>

namespace zelvano {

namespace {

int waitsForPicture = 0; // The render thread does not wait until a picture is due.

mpv_render_param apiOf(const char *name)
{
    return {MPV_RENDER_PARAM_API_TYPE, const_cast<char *>(name)};
}

void *findFunction(void *, const char *name)
{
    const auto *context = QOpenGLContext::currentContext();
    return context ? reinterpret_cast<void *>(context->getProcAddress(name)) : nullptr;
}

class GlRenderer : public QQuickFramebufferObject::Renderer
{
public:
    explicit GlRenderer(const std::shared_ptr<MpvCore> &core) : m_core(core) {}

private:
    void render() override
    {
        if (!m_canvas)
            m_canvas = createCanvas();
        if (!m_canvas)
            return;
        auto *target = framebufferObject();
        mpv_opengl_fbo buffer{static_cast<int>(target->handle()), target->width(), target->height(), 0};
        std::array parameters{mpv_render_param{MPV_RENDER_PARAM_OPENGL_FBO, &buffer},
                              mpv_render_param{MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForPicture},
                              mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
        QQuickOpenGLUtils::resetOpenGLState();
        m_canvas->draw(parameters.data());
        QQuickOpenGLUtils::resetOpenGLState();
    }

    /// Without a GPU, a video that mpv 0.40 draws in several passes sometimes stays black.
    void avoidPasses() const
    {
        const auto *const renderer = QOpenGLContext::currentContext()->functions()->glGetString(GL_RENDERER);
        if (QByteArrayView(reinterpret_cast<const char *>(renderer)).contains("llvmpipe"))
            m_core->command({"set", "gpu-dumb-mode", "yes"});
    }

    std::unique_ptr<MpvCanvas> createCanvas() const
    {
        avoidPasses();
        mpv_opengl_init_params functions{&findFunction, nullptr};
        std::array parameters{apiOf(MPV_RENDER_API_TYPE_OPENGL),
                              mpv_render_param{MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &functions},
                              mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
        return MpvCanvas::create(m_core, parameters.data());
    }

    const std::shared_ptr<MpvCore> m_core;
    std::unique_ptr<MpvCanvas> m_canvas;
};

class SoftwareNode : public QSGSimpleTextureNode
{
public:
    explicit SoftwareNode(const std::shared_ptr<MpvCore> &core) : m_core(core)
    {
        setOwnsTexture(true);
        setFiltering(QSGTexture::Linear);
    }

    void draw(QQuickWindow *window, const QSizeF &size)
    {
        std::array api{apiOf(MPV_RENDER_API_TYPE_SW), mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
        if (!m_canvas)
            m_canvas = MpvCanvas::create(m_core, api.data());
        QImage picture((size * window->effectiveDevicePixelRatio()).toSize().expandedTo({1, 1}), QImage::Format_RGB32);
        picture.fill(Qt::black);
        std::array extent{picture.width(), picture.height()};
        auto stride = static_cast<size_t>(picture.bytesPerLine());
        std::array parameters{mpv_render_param{MPV_RENDER_PARAM_SW_SIZE, extent.data()},
                              mpv_render_param{MPV_RENDER_PARAM_SW_FORMAT, const_cast<char *>("bgr0")},
                              mpv_render_param{MPV_RENDER_PARAM_SW_STRIDE, &stride},
                              mpv_render_param{MPV_RENDER_PARAM_SW_POINTER, picture.bits()},
                              mpv_render_param{MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForPicture},
                              mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
        if (m_canvas)
            m_canvas->draw(parameters.data());
        setTexture(window->createTextureFromImage(picture, QQuickWindow::TextureIsOpaque));
        setRect(QRectF({}, size));
    }

private:
    const std::shared_ptr<MpvCore> m_core;
    std::unique_ptr<MpvCanvas> m_canvas;
};

} // namespace

MpvGlSurface::MpvGlSurface(const std::shared_ptr<MpvCore> &core, QQuickItem *parent)
    : QQuickFramebufferObject(parent), m_core(core)
{
    connect(core.get(), &MpvCore::pictureChanged, this, &QQuickItem::update);
}

QQuickFramebufferObject::Renderer *MpvGlSurface::createRenderer() const
{
    return new GlRenderer(m_core);
}

MpvSoftwareSurface::MpvSoftwareSurface(const std::shared_ptr<MpvCore> &core, QQuickItem *parent)
    : QQuickItem(parent), m_core(core)
{
    setFlag(ItemHasContents);
    connect(core.get(), &MpvCore::pictureChanged, this, &QQuickItem::update);
}

QSGNode *MpvSoftwareSurface::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    auto *surface = node ? static_cast<SoftwareNode *>(node) : new SoftwareNode(m_core);
    surface->draw(window(), size());
    surface->markDirty(QSGNode::DirtyMaterial);
    return surface;
}

} // namespace zelvano
