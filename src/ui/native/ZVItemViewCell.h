#pragma once

#include "ZVItemView.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

class QKeyEvent;

namespace zelvano {

/// A cell of an item view: the root of its interface resource. The view's ListView creates it and reuses it for other
/// rows.
class ZELVANOUI_EXPORT ZVItemViewCell : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(zelvano::ZVItemView *view READ view WRITE setView NOTIFY viewChanged FINAL)
    /// The row shown; -1 for none. The view fills the cell with each new row, with the first one before the bindings
    /// inside the cell are evaluated.
    Q_PROPERTY(int row READ row WRITE setRow NOTIFY rowChanged FINAL)

public:
    ~ZVItemViewCell() override;

    ZVItemView *view() const { return m_view; }
    void setView(ZVItemView *view);
    Q_SIGNAL void viewChanged();
    qint64 row() const { return m_row; }
    void setRow(qint64 row);
    Q_SIGNAL void rowChanged();

    /// Whether keys act on this cell.
    virtual void setCurrent(bool current);
    /// Called when it stops showing its row.
    virtual void prepareForReuse() {}
    /// Handles a key while current; false for a key without a meaning here.
    virtual bool handleKey(QKeyEvent *) { return false; }

protected:
    ZVItemViewCell() = default;

private:
    friend class ZVItemView;

    void enterRow();

    QPointer<ZVItemView> m_view;
    qint64 m_row = -1;
};

} // namespace zelvano
