#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QPointer>
#include <QQuickItem>

#include <memory>

class QKeyEvent;

namespace zelvano {

class InterfaceResource;
class ZVItemView;

/// A cell of an item view, which shows now one row, now another. Its look is an interface resource that fills it.
class ZELVANOUI_EXPORT ZVItemViewCell : public QQuickItem
{
    Q_OBJECT

public:
    ~ZVItemViewCell() override;

    /// The row that it shows; -1 while it shows none.
    qint64 row() const { return m_row; }
    /// Whether the keyboard is at this cell.
    Q_PROPERTY(bool current READ isCurrent NOTIFY currentChanged FINAL)
    bool isCurrent() const { return m_isCurrent; }
    Q_SIGNAL void currentChanged();

    virtual void setCurrent(bool current);
    /// Called when it stops showing its row.
    virtual void prepareForReuse() {}
    /// A key pressed while it is current; false when it means nothing here.
    virtual bool handleKey(QKeyEvent *) { return false; }

    // Actions of the interface resource.
    Q_INVOKABLE void pressBegan();
    /// The viewer picks the cell. The view tells of it a moment later, outside the input's delivery.
    Q_INVOKABLE void activate();

protected:
    ZVItemViewCell();

    /// Takes the look from the bundle, and its size for a start. Null when there is none.
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
