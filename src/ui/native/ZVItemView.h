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

/// A scrolling view of items. Only items near the viewport have cells, which are reused.
///
/// Its interface resource sets a Flickable as scroller. The arrow keys, Home, End, Page Up and Page Down move between
/// items, Return and Space choose one. Main thread.
class ZELVANOUI_EXPORT ZVItemView : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QQuickItem *scroller READ scroller WRITE setScroller NOTIFY scrollerChanged FINAL)
    /// From right to left. Set by the interface resource, from the application's or the host item's layout direction.
    Q_PROPERTY(bool mirrored READ isMirrored WRITE setMirrored NOTIFY mirroredChanged FINAL)
    Q_PROPERTY(QSizeF contentSize READ contentSize NOTIFY contentSizeChanged FINAL)

public:
    /// Returns null when the cell cannot be created.
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
    /// A cell for the data source to fill. Null when the identifier is unknown or the cell cannot be created. The view
    /// owns it.
    ZVItemViewCell *dequeueReusableCell(const QString &identifier);

    /// Reads count, sizes and cells again.
    void reloadData();
    /// Adds one item at the end.
    void insertItemAtEnd();
    /// Reads the sizes again.
    void invalidateLayout();
    /// Applies pending changes now instead of before the next frame.
    void layoutIfNeeded();

    qint64 itemCount() const { return m_layout.count(); }
    /// Null while the row is not near the viewport.
    ZVItemViewCell *cellForRow(qint64 row) const;
    std::vector<ZVItemViewCell *> shownCells() const;
    /// The number of cells, shown and reusable.
    qint64 cellCount() const { return m_cellCount; }

    /// Scrolls until the whole row is visible.
    void scrollToRow(qint64 row);
    void scrollToStart();

    /// The row that keys act on; 0 at first.
    qint64 currentRow() const { return m_currentRow; }
    void setCurrentRow(qint64 row);
    /// Whether the current row is marked. By default only when the focus came by keyboard.
    void setShowsCurrent(bool shows);
    bool handleKey(QKeyEvent *event);

protected:
    ZVItemView();

    virtual qint64 countItems() = 0;
    virtual QSizeF sizeOfItem(qint64 row) = 0;
    virtual ZVFlowLayout::Metrics metrics() = 0;
    /// Dequeues and fills a cell.
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
