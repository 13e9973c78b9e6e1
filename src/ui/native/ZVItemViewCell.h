#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QPointer>
#include <QQuickItem>

#include <memory>

class QKeyEvent;

namespace zelvano {

class InterfaceResource;
class ZVItemView;

/// A cell of an item view, reused for other rows. An interface resource fills it.
class ZELVANOUI_EXPORT ZVItemViewCell : public QQuickItem
{
    Q_OBJECT

public:
    ~ZVItemViewCell() override;

    /// The row shown; -1 for none.
    qint64 row() const { return m_row; }
    /// Whether keys act on this cell.
    Q_PROPERTY(bool current READ isCurrent NOTIFY currentChanged FINAL)
    bool isCurrent() const { return m_isCurrent; }
    Q_SIGNAL void currentChanged();

    virtual void setCurrent(bool current);
    /// Called when it stops showing its row.
    virtual void prepareForReuse() {}
    /// Handles a key while current; false for a key without a meaning here.
    virtual bool handleKey(QKeyEvent *) { return false; }

    // Called by the interface resource.
    Q_INVOKABLE void pressBegan();
    /// The viewer chose the cell. The view reports it in the next turn of the event loop.
    Q_INVOKABLE void activate();

protected:
    ZVItemViewCell();

    /// Loads the resource and takes its size. Null without one.
    InterfaceResource *loadContent(const QString &name);
    QQuickItem *outlet(const QString &objectName) const;

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    friend class ZVItemView;

    std::unique_ptr<InterfaceResource> m_content;
    QPointer<ZVItemView> m_view;
    QString m_identifier;
    qint64 m_row = -1;
    bool m_isCurrent = false;
};

} // namespace zelvano
