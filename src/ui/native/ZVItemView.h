#pragma once

#include "ZVItemViewDataSource.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <QAbstractListModel>
#include <QColor>
#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

#include <map>
#include <vector>

namespace zelvano {

/// The lines of an item view: a number of rows without data. Main thread.
class LineModel : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : m_count; }
    QVariant data(const QModelIndex &, int) const override { return {}; }
    /// Adds or removes lines at the end.
    void setCount(int count);

private:
    int m_count = 0;
};

/// A scrolling view of items: a collection view, or a table view with one item in a line. Its interface resource has a
/// ListView of lines, which creates, reuses and places the cells. A cell registers itself with its row, and the data
/// source fills it.
///
/// The arrow keys, Home, End, Page Up and Page Down move between items, Return and Space choose one. Main thread.
class ZELVANOUI_EXPORT ZVItemView : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    /// The ListView. Set by the interface resource, like the next three.
    Q_PROPERTY(QQuickItem *scroller READ scroller MEMBER m_scroller FINAL)
    /// Cells in a line.
    Q_PROPERTY(int columns MEMBER m_columns FINAL)
    /// From right to left, as the application or the host's item.
    Q_PROPERTY(bool mirrored MEMBER m_isMirrored FINAL)
    /// Whether a press is meant for something above the cells.
    Q_PROPERTY(bool blocked MEMBER m_isBlocked FINAL)
    Q_PROPERTY(QAbstractItemModel *lines READ lines CONSTANT FINAL)
    /// The data source's, in points and in whole pixels: other positions look blurred.
    Q_PROPERTY(double inset READ inset NOTIFY insetChanged FINAL)
    // The look of the cells. The radius is in points.
    Q_PROPERTY(double cellRadius MEMBER m_cellRadius NOTIFY lookChanged FINAL)
    Q_PROPERTY(QColor cellColor MEMBER m_cellColor NOTIFY lookChanged FINAL)
    Q_PROPERTY(QColor titleColor MEMBER m_titleColor NOTIFY lookChanged FINAL)
    Q_PROPERTY(bool badged MEMBER m_isBadged NOTIFY lookChanged FINAL)
    Q_PROPERTY(int count READ itemCount NOTIFY countChanged FINAL)
    /// The marked cell; null for none.
    Q_PROPERTY(QQuickItem *currentCell READ currentCell NOTIFY currentCellChanged FINAL)

public:
    ~ZVItemView() override;

    /// Not owned; null for none.
    void setDataSource(ZVItemViewDataSource *source);

    QQuickItem *scroller() const { return m_scroller; }
    QAbstractItemModel *lines() { return &m_lines; }
    double inset() const { return m_source ? snapped(m_source->inset()) : 0; }
    Q_SIGNAL void insetChanged();
    qint64 itemCount() const { return m_count; }
    QQuickItem *currentCell() const;
    Q_SIGNAL void currentCellChanged();
    Q_SIGNAL void countChanged();
    Q_SIGNAL void lookChanged();

    /// Reads count, sizes and contents again before the next frame. After polish() it reads the count alone.
    void reloadData();
    /// Applies pending changes now instead of before the next frame.
    void layoutIfNeeded();

    /// Null while the row is not near the viewport.
    ZVItemViewCell *cellForRow(qint64 row) const;
    std::vector<ZVItemViewCell *> shownCells() const;

    /// Scrolls until the whole row is visible.
    void scrollToRow(qint64 row);
    void scrollToStart() { scrollToEdge(true); }

    /// The row that keys act on; 0 at first.
    qint64 currentRow() const { return m_currentRow; }
    void setCurrentRow(qint64 row);
    /// Whether the current row is marked. By default only when the focus came by keyboard.
    void setShowsCurrent(bool shows);
    bool handleKey(QKeyEvent *event);

    // Called by the interface resource.
    Q_INVOKABLE void pressBegan();
    /// The viewer tapped the cell of this row. A tap that stops a movement chooses nothing.
    Q_INVOKABLE void activate(qint64 row);
    /// The viewer chose the row without a pointer.
    Q_INVOKABLE void choose(qint64 row);

protected:
    void updatePolish() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    friend class ZVItemViewCell;

    // Called by cells.
    void addCell(ZVItemViewCell *cell);
    void removeCell(ZVItemViewCell *cell);

    qint64 countItems() const { return m_source ? m_source->numberOfItemsInSection() : 0; }
    double snapped(double points) const;
    bool isVertical() const;
    bool isInSight(qint64 row) const;
    qint64 firstRowInSight() const;
    void keepReadingOrder(qint64 row) const;
    void showCell(ZVItemViewCell *cell);
    void markCurrent();
    qint64 rowForKey(int key) const;
    void call(const char *function) const;
    void showLine(qint64 row, int mode) const;
    void scrollToEdge(bool isStart);

    ZVItemViewDataSource *m_source = nullptr;
    LineModel m_lines;
    QPointer<QQuickItem> m_scroller;
    std::map<qint64, ZVItemViewCell *> m_cells; ///< By row.
    QPointer<ZVItemViewCell> m_currentCell;
    qint64 m_count = 0;
    qint64 m_currentRow = 0;
    qint64 m_rowToKeep = -1; ///< The first row in sight before a change of the size.
    double m_cellRadius = -1;
    QColor m_cellColor = QColor(0x2c, 0x31, 0x3d);
    QColor m_titleColor = Qt::white;
    int m_columns = 1;
    bool m_isBadged = true;
    bool m_isMirrored = false;
    bool m_isBlocked = false;
    bool m_isDataStale = false;
    bool m_isUpdating = false;
    bool m_pressStopsMovement = false;
    bool m_showsCurrent = false;
};

} // namespace zelvano
