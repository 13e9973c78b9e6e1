#pragma once

#include "ZVFlowLayout.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <QHash>
#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

#include <functional>
#include <map>
#include <vector>

namespace zelvano {

class ZVItemViewCell;

/// A scrolling view of items of which only those near the viewport have cells; cells are reused.
///
/// Its interface resource gives it a Flickable as scroller. The arrow keys, Home, End, Page Up and Page Down move from
/// item to item, Return and Space pick one. Main thread.
class ZELVANOUI_EXPORT ZVItemView : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QQuickItem *scroller READ scroller WRITE setScroller NOTIFY scrollerChanged FINAL)
    /// From right to left. Its interface resource says so: in a right-to-left application, or as the host's own items
    /// do.
    Q_PROPERTY(bool mirrored READ isMirrored WRITE setMirrored NOTIFY mirroredChanged FINAL)
    Q_PROPERTY(QSizeF contentSize READ contentSize NOTIFY contentSizeChanged FINAL)

public:
    /// Null when the cell cannot be made.
    using CellFactory = std::function<ZVItemViewCell *()>;

    ~ZVItemView() override;

    QQuickItem *scroller() const { return m_scroller; }
    void setScroller(QQuickItem *scroller);
    Q_SIGNAL void scrollerChanged();
    bool isMirrored() const { return m_isMirrored; }
    void setMirrored(bool mirrored);
    Q_SIGNAL void mirroredChanged();
    QSizeF contentSize() const { return m_contentSize; }
    Q_SIGNAL void contentSizeChanged();

    void registerCell(const QString &identifier, const CellFactory &factory);
    /// A cell to be filled, for the data source's answer; null for an identifier that was not registered, or when the
    /// cell cannot be made. The view owns it.
    ZVItemViewCell *dequeueReusableCell(const QString &identifier);

    /// Asks for everything again: count, sizes and cells.
    void reloadData();
    /// Places one more item behind the last.
    void insertItemAtEnd();
    /// Asks for sizes again.
    void invalidateLayout();
    /// Does at once what waits for the next frame.
    void layoutIfNeeded();

    qint64 itemCount() const { return m_layout.count(); }
    /// Null while the row is not near the viewport.
    ZVItemViewCell *cellForRow(qint64 row) const;
    std::vector<ZVItemViewCell *> shownCells() const;
    /// All that were made: those shown and those waiting to be reused.
    qint64 cellCount() const { return m_cellCount; }

    /// Scrolls as far as it takes to see the whole row.
    void scrollToRow(qint64 row);
    void scrollToStart();

    /// Where the keyboard is; 0 at first.
    qint64 currentRow() const { return m_currentRow; }
    void setCurrentRow(qint64 row);
    /// Whether the cell of the current row is marked. By itself a view marks it when the focus came by keyboard.
    void setShowsCurrent(bool shows);
    bool handleKey(QKeyEvent *event);

protected:
    ZVItemView();

    virtual qint64 countItems() = 0;
    virtual QSizeF sizeOfItem(qint64 row) = 0;
    virtual ZVFlowLayout::Metrics metrics() = 0;
    /// Dequeues a cell and fills it.
    virtual ZVItemViewCell *cellForItem(qint64 row) = 0;
    virtual void selectItem(qint64 row) = 0;

    void updatePolish() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    friend class ZVItemViewCell;

    void pressDidBegin();
    void cellWasTapped(qint64 row);
    void select(qint64 row);

    bool isVertical() const { return m_layout.metrics().direction == Qt::Vertical; }
    double extent() const { return isVertical() ? height() : width(); }
    bool runsLeft() const { return m_isMirrored && !isVertical(); }
    double margin() const;
    double contentLength() const;
    double offset() const;
    void setOffset(double offset);
    void placeItems();
    void publishContentSize();
    void updateCells();
    void fillViewport();
    void updateRows(qint64 first, qint64 end, bool isDataStale);
    void recycleOutside(qint64 first, qint64 end);
    void showRow(qint64 row);
    void placeCell(ZVItemViewCell *cell);
    void recycle(ZVItemViewCell *cell);
    void markCurrent();
    qint64 rowForKey(int key) const;
    qint64 rowOnePageOn(int direction) const;
    Q_SLOT void viewportDidMove();

    QPointer<QQuickItem> m_scroller;
    QHash<QString, CellFactory> m_factories;
    std::map<qint64, ZVItemViewCell *> m_shown;
    QHash<QString, std::vector<ZVItemViewCell *>> m_reusable;
    qint64 m_cellCount = 0;
    ZVFlowLayout m_layout;
    QSizeF m_contentSize;
    bool m_isDataStale = false;
    bool m_isLayoutStale = true;
    bool m_isLayingOut = false;
    bool m_isMirrored = false;
    bool m_restartsWhenMirrored = false;
    bool m_pressStopsMovement = false;
    bool m_showsCurrent = false;
    qint64 m_currentRow = 0;
};

} // namespace zelvano
