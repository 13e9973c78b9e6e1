#include "ZVItemView.h"

#include "ZVItemViewCell.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

#include <algorithm>
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
    if (count > m_count) {
        beginInsertRows({}, m_count, count - 1);
        m_count = count;
        endInsertRows();
    } else if (count < m_count) {
        beginRemoveRows({}, count, m_count - 1);
        m_count = count;
        endRemoveRows();
    }
}

ZVItemView::ZVItemView() = default;

ZVItemView::~ZVItemView()
{
    for (const auto &[row, cell] : m_cells)
        cell->m_view = nullptr;
}

// Cells

void ZVItemView::addCell(ZVItemViewCell *cell)
{
    m_cells[cell->row()] = cell;
    showCell(cell);
}

void ZVItemView::removeCell(ZVItemViewCell *cell)
{
    if (cellForRow(cell->row()) == cell)
        m_cells.erase(cell->row());
    if (cell->isCurrent())
        Q_EMIT currentCellChanged();
}

void ZVItemView::showCell(ZVItemViewCell *cell)
{
    const bool exists = cell->row() < countItems(); // The last line may have fewer cells.
    cell->setVisible(exists);
    if (exists)
        fillCell(cell);
    cell->setCurrent(m_showsCurrent && cell->row() == m_currentRow);
    if (cell->isCurrent())
        Q_EMIT currentCellChanged();
}

QQuickItem *ZVItemView::currentCell() const
{
    return m_showsCurrent ? cellForRow(m_currentRow) : nullptr;
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

void ZVItemView::insertItemAtEnd()
{
    polish();
}

void ZVItemView::updatePolish()
{
    updateItems();
}

void ZVItemView::layoutIfNeeded()
{
    updateItems();
    call("forceLayout");
}

void ZVItemView::updateItems()
{
    if (m_isUpdating)
        return;
    const QScopedValueRollback busy(m_isUpdating, true);
    const auto countBefore = std::exchange(m_count, countItems());
    const auto firstStale = std::exchange(m_isDataStale, false) ? 0 : std::min(countBefore, m_count);
    updateMetrics();
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

/// With the margin around the lines, which ListView leaves out.
void ZVItemView::scrollToEdge(Edge edge)
{
    if (!m_scroller)
        return;
    const bool vertical = isVertical();
    const auto value = [this](const char *name) { return m_scroller->property(name).toDouble(); };
    call("cancelFlick");
    call(edge == Edge::Start ? "positionViewAtBeginning" : "positionViewAtEnd");
    const double margin = value(vertical ? "topMargin" : "leftMargin");
    const double origin = value(vertical ? "originY" : "originX");
    const double low = origin - margin;
    const double high =
        origin + value(vertical ? "contentHeight" : "contentWidth") + margin - (vertical ? height() : width());
    const bool isLow = (edge == Edge::Start) != (m_isMirrored && !vertical);
    // Few items stay at the start.
    const double position = edge == Edge::Start ? (isLow ? low : high)
                            : isLow             ? std::min(low, high)
                                                : std::max(low, high);
    m_scroller->setProperty(vertical ? "contentY" : "contentX", position);
}

void ZVItemView::scrollToRow(qint64 row)
{
    layoutIfNeeded();
    if (row < 0 || row >= m_count)
        return;
    if (row < m_columns) {
        scrollToStart();
    } else if (row / m_columns == (m_count - 1) / m_columns) {
        scrollToEdge(Edge::End);
    } else {
        call("cancelFlick");
        showLine(row, contained);
    }
    call("forceLayout");
}

// Input

/// A press that stops a movement chooses nothing. The view itself may move, or a view around it.
void ZVItemView::pressDidBegin()
{
    m_pressStopsMovement = m_isBlocked || (m_scroller && m_scroller->property("moving").toBool());
    for (const auto *item = parentItem(); item && !m_pressStopsMovement; item = item->parentItem())
        m_pressStopsMovement = item->property("moving").toBool();
}

void ZVItemView::cellWasTapped(qint64 row)
{
    if (std::exchange(m_pressStopsMovement, false))
        return;
    setCurrentRow(row);
    setShowsCurrent(false);
    if (activeFocusOnTab())
        forceActiveFocus(Qt::MouseFocusReason);
    selectItem(row);
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

void ZVItemView::markCurrent()
{
    for (const auto &[row, cell] : m_cells)
        cell->setCurrent(m_showsCurrent && row == m_currentRow);
    Q_EMIT currentCellChanged();
}

/// At an end the current row.
qint64 ZVItemView::rowForKey(int key) const
{
    const auto *cell = cellForRow(m_currentRow);
    const double length = cell ? cell->height() : height();
    const auto linesInPage = std::max<qint64>(1, static_cast<qint64>(height() / std::max(length, 1.0)));
    const auto last = m_count - 1;
    const auto moved = [&](qint64 lines) {
        const auto row = m_currentRow + lines * m_columns;
        const auto lastLine = last / m_columns;
        if (row < 0)
            return lines == -1 ? m_currentRow : m_currentRow % m_columns;
        return row / m_columns > lastLine && lines == 1 ? m_currentRow : std::min(row, last);
    };
    const bool isVertical = this->isVertical();
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const auto row = m_currentRow + ((key == Qt::Key_Right) != m_isMirrored ? 1 : -1);
        return isVertical && m_columns == 1 ? m_currentRow : std::clamp<qint64>(row, 0, last);
    }
    case Qt::Key_Up:
        return isVertical ? moved(-1) : m_currentRow;
    case Qt::Key_Down:
        return isVertical ? moved(1) : m_currentRow;
    case Qt::Key_PageUp:
        return isVertical ? moved(-linesInPage) : m_currentRow;
    case Qt::Key_PageDown:
        return isVertical ? moved(linesInPage) : m_currentRow;
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    default:
        return m_currentRow;
    }
}

bool ZVItemView::handleKey(QKeyEvent *event)
{
    layoutIfNeeded();
    const auto key = event->key();
    const bool chooses = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space || key == Qt::Key_Select;
    // A key with a modifier is the host's.
    if (m_count == 0 || (event->modifiers() & ~Qt::KeypadModifier))
        return false;
    m_showsCurrent = true;
    markCurrent();
    if (chooses && !isInSight(m_currentRow)) {
        scrollToRow(m_currentRow);
        return true;
    }
    if (auto *const cell = cellForRow(m_currentRow); cell && cell->handleKey(event))
        return true;
    if (chooses) {
        if (!event->isAutoRepeat())
            selectItem(m_currentRow);
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
