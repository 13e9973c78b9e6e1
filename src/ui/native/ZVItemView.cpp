#include "ZVItemView.h"

#include "ZVItemViewCell.h"

#include <QKeyEvent>
#include <QQuickWindow>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <utility>

// Generated. The reference keeps the registration of the QML types in programs that link the library statically.
void qml_register_types_ZelvanoUI_Interface();
[[gnu::used]] static constexpr auto registration = &qml_register_types_ZelvanoUI_Interface;

namespace zelvano {

namespace {

// ListView's modes of positioning.
constexpr int atBeginning = 0;
constexpr int contained = 4;

/// The window changed, not the focus within it.
bool isByWindow(const QFocusEvent *event)
{
    return event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
}

} // namespace

void LineModel::setCount(int count)
{
    if (count == m_count)
        return;
    const bool grows = count > m_count;
    grows ? beginInsertRows({}, m_count, count - 1) : beginRemoveRows({}, count, m_count - 1);
    m_count = count;
    grows ? endInsertRows() : endRemoveRows();
}

ZVItemView::~ZVItemView()
{
    for (const auto &[row, cell] : m_cells)
        cell->m_view = nullptr;
}

// The data source

void ZVItemView::setDataSource(ZVItemViewDataSource *source)
{
    m_source = source;
    reloadData();
}

double ZVItemView::snapped(double points) const
{
    const double pixels = window() ? window()->effectiveDevicePixelRatio() : 1;
    return std::round(points * pixels) / pixels;
}

// Cells

void ZVItemView::addCell(ZVItemViewCell *cell)
{
    m_cells[cell->row()] = cell;
    keepReadingOrder(cell->row());
    showCell(cell);
}

/// Screen readers read the lines in the order of their parent's children. ListView leaves there the lines that it uses
/// again.
void ZVItemView::keepReadingOrder(qint64 row) const
{
    const auto lineOf = [this](const auto &entry) {
        QQuickItem *line = entry->second;
        while (line->parentItem() && line->parentItem()->parentItem() != m_scroller)
            line = line->parentItem();
        return line;
    };
    auto *const line = lineOf(m_cells.find(row));
    const auto next = m_cells.lower_bound((row / m_columns + 1) * m_columns);
    const auto first = m_cells.lower_bound(row / m_columns * m_columns);
    if (next != m_cells.end())
        line->stackBefore(lineOf(next));
    else if (first != m_cells.begin())
        line->stackAfter(lineOf(std::prev(first)));
}

void ZVItemView::removeCell(ZVItemViewCell *cell)
{
    if (cellForRow(cell->row()) == cell)
        m_cells.erase(cell->row());
    markCurrent();
}

void ZVItemView::showCell(ZVItemViewCell *cell)
{
    const bool exists = cell->row() < countItems(); // The last line may have fewer cells.
    cell->setVisible(exists);
    if (exists) {
        if (const auto size = m_source->sizeForItemAtIndexPath(cell->row()); size.isValid())
            cell->setSize({snapped(size.width()), snapped(size.height())});
        m_source->cellForItemAtIndexPath(cell->row(), cell);
    }
    markCurrent();
}

ZVItemViewCell *ZVItemView::cellForRow(qint64 row) const
{
    const auto found = m_cells.find(row);
    return found == m_cells.end() ? nullptr : found->second;
}

std::vector<ZVItemViewCell *> ZVItemView::shownCells() const
{
    std::vector<ZVItemViewCell *> cells;
    for (const auto &[row, cell] : m_cells) {
        if (row < m_count)
            cells.push_back(cell);
    }
    return cells;
}

// Layout

void ZVItemView::reloadData()
{
    m_isDataStale = true;
    polish();
}

void ZVItemView::layoutIfNeeded()
{
    updatePolish();
    call("forceLayout");
}

void ZVItemView::updatePolish()
{
    if (m_isUpdating)
        return;
    const QScopedValueRollback busy(m_isUpdating, true);
    const auto countBefore = std::exchange(m_count, countItems());
    const auto firstStale = std::exchange(m_isDataStale, false) ? 0 : std::min(countBefore, m_count);
    Q_EMIT insetChanged();
    const bool hasExtent = width() > 0 && height() > 0; // Without one all lines would be in the viewport.
    m_lines.setCount(hasExtent ? static_cast<int>((m_count + m_columns - 1) / m_columns) : 0);
    const auto cells = m_cells; // A filled cell may change the registered ones.
    for (const auto &[row, cell] : cells) {
        if (row >= firstStale && cellForRow(row) == cell)
            showCell(cell);
    }
    if (m_count != countBefore) {
        m_currentRow = std::clamp<qint64>(m_currentRow, 0, std::max<qint64>(m_count - 1, 0));
        markCurrent();
        Q_EMIT countChanged();
    }
    if (const auto row = hasExtent ? std::exchange(m_rowToKeep, -1) : -1; row >= 0) {
        call("forceLayout"); // The lines have other heights.
        row < m_columns ? scrollToStart() : showLine(row, atBeginning);
    }
}

void ZVItemView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    const bool isResized = newGeometry.size() != oldGeometry.size();
    if (isResized && m_rowToKeep < 0)
        m_rowToKeep = firstRowInSight();
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (isResized)
        reloadData();
}

// Scrolling

bool ZVItemView::isVertical() const
{
    return !m_scroller || m_scroller->property("orientation").toInt() == Qt::Vertical;
}

bool ZVItemView::isInSight(qint64 row) const
{
    const auto *cell = cellForRow(row);
    return cell && cell->mapRectToItem(this, cell->boundingRect()).intersects(boundingRect());
}

qint64 ZVItemView::firstRowInSight() const
{
    const auto found = std::ranges::find_if(m_cells, [this](const auto &entry) { return isInSight(entry.first); });
    return found == m_cells.end() ? -1 : found->first;
}

void ZVItemView::call(const char *function) const
{
    if (m_scroller)
        QMetaObject::invokeMethod(m_scroller, function);
}

void ZVItemView::showLine(qint64 row, int mode) const
{
    if (m_scroller)
        QMetaObject::invokeMethod(m_scroller, "positionViewAtIndex", Q_ARG(int, static_cast<int>(row / m_columns)),
                                  Q_ARG(int, mode));
}

/// With the margin around the lines, which ListView leaves out. Few items stay at the start.
void ZVItemView::scrollToEdge(bool isStart)
{
    if (!m_scroller)
        return;
    call(isStart ? "positionViewAtBeginning" : "positionViewAtEnd");
    const bool vertical = isVertical();
    const auto value = [&](const char *ofRows, const char *ofColumns) {
        return m_scroller->property(vertical ? ofRows : ofColumns).toDouble();
    };
    const double margin = value("topMargin", "leftMargin");
    const double low = value("originY", "originX") - margin;
    const double high = low + value("contentHeight", "contentWidth") + 2 * margin - value("height", "width");
    const bool isReversed = m_isMirrored && !vertical;
    const double end = isReversed ? std::min(low, high) : std::max(low, high);
    m_scroller->setProperty(vertical ? "contentY" : "contentX", !isStart ? end : isReversed ? high : low);
}

void ZVItemView::scrollToRow(qint64 row)
{
    layoutIfNeeded();
    if (row < 0 || row >= m_count)
        return;
    if (row < m_columns)
        scrollToStart();
    else if (row / m_columns == (m_count - 1) / m_columns)
        scrollToEdge(false);
    else
        showLine(row, contained);
    call("forceLayout");
}

// Input

/// A press that stops a movement chooses nothing. The view itself may move, or a view around it.
void ZVItemView::pressBegan()
{
    m_pressStopsMovement = m_isBlocked || (m_scroller && m_scroller->property("moving").toBool());
    for (const auto *item = parentItem(); item && !m_pressStopsMovement; item = item->parentItem())
        m_pressStopsMovement = item->property("moving").toBool();
}

void ZVItemView::activate(qint64 row)
{
    if (std::exchange(m_pressStopsMovement, false))
        return;
    setCurrentRow(row);
    setShowsCurrent(false);
    if (activeFocusOnTab())
        forceActiveFocus(Qt::MouseFocusReason);
    choose(row);
}

void ZVItemView::choose(qint64 row)
{
    if (row >= 0 && row < m_count && m_source)
        m_source->didSelectItemAtIndexPath(row);
}

void ZVItemView::setCurrentRow(qint64 row)
{
    if (row < 0 || row >= m_count)
        return;
    m_currentRow = row;
    markCurrent();
}

void ZVItemView::setShowsCurrent(bool shows)
{
    m_showsCurrent = shows;
    markCurrent();
}

QQuickItem *ZVItemView::currentCell() const
{
    return m_currentCell;
}

void ZVItemView::markCurrent()
{
    auto *const cell = m_showsCurrent ? cellForRow(m_currentRow) : nullptr;
    const auto before = std::exchange(m_currentCell, cell);
    if (before == cell)
        return;
    if (before)
        before->setCurrent(false);
    if (cell)
        cell->setCurrent(true);
    Q_EMIT currentCellChanged();
}

/// The row that the key moves to: the current one at an end, and for a key without a meaning here.
qint64 ZVItemView::rowForKey(int key) const
{
    const auto last = m_count - 1;
    const auto is = [key](Qt::Key other) { return key == other ? 1 : 0; };
    const bool isVertical = this->isVertical();
    if (const int aside = is(Qt::Key_Right) - is(Qt::Key_Left); aside != 0 && (!isVertical || m_columns > 1))
        return std::clamp<qint64>(m_currentRow + (m_isMirrored ? -aside : aside), 0, last);
    if (key == Qt::Key_Home || key == Qt::Key_End)
        return key == Qt::Key_Home ? 0 : last;
    const auto *cell = cellForRow(m_currentRow);
    const auto linesInPage = std::max(1, static_cast<int>(height() / std::max(cell ? cell->height() : height(), 1.0)));
    const auto lines = is(Qt::Key_Down) - is(Qt::Key_Up) + linesInPage * (is(Qt::Key_PageDown) - is(Qt::Key_PageUp));
    const auto line = std::clamp<qint64>(m_currentRow / m_columns + (isVertical ? lines : 0), 0, last / m_columns);
    return std::min(line * m_columns + m_currentRow % m_columns, last);
}

bool ZVItemView::handleKey(QKeyEvent *event)
{
    layoutIfNeeded();
    const auto key = event->key();
    const bool chooses = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space || key == Qt::Key_Select;
    // A key with a modifier is the host's.
    if (m_count == 0 || (event->modifiers() & ~Qt::KeypadModifier))
        return false;
    setShowsCurrent(true);
    if (chooses && !isInSight(m_currentRow)) {
        scrollToRow(m_currentRow);
        return true;
    }
    if (auto *const cell = cellForRow(m_currentRow); cell && cell->handleKey(event))
        return true;
    if (chooses) {
        if (!event->isAutoRepeat())
            choose(m_currentRow);
        return true;
    }
    const auto row = rowForKey(key);
    if (row == m_currentRow)
        return false; // At an end the parent items handle the key.
    setCurrentRow(row);
    scrollToRow(row);
    return true;
}

void ZVItemView::keyPressEvent(QKeyEvent *event)
{
    event->setAccepted(handleKey(event));
}

void ZVItemView::focusInEvent(QFocusEvent *event)
{
    QQuickItem::focusInEvent(event);
    if (isByWindow(event))
        return;
    setShowsCurrent(event->reason() != Qt::MouseFocusReason);
    if (m_showsCurrent)
        scrollToRow(m_currentRow);
}

void ZVItemView::focusOutEvent(QFocusEvent *event)
{
    QQuickItem::focusOutEvent(event);
    if (!isByWindow(event))
        setShowsCurrent(false);
}

} // namespace zelvano
