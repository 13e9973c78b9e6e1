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

constexpr double marginShare = 0.5; // Of the view's extent: so far before and after it rows have cells.

} // namespace

ZVItemView::ZVItemView() = default;
ZVItemView::~ZVItemView() = default;

void ZVItemView::setScroller(QQuickItem *scroller)
{
    if (m_scroller == scroller)
        return;
    if (m_scroller)
        disconnect(m_scroller, nullptr, this, nullptr);
    m_scroller = scroller;
    if (scroller) {
        connect(scroller, SIGNAL(contentXChanged()), this, SLOT(viewportDidMove()));
        connect(scroller, SIGNAL(contentYChanged()), this, SLOT(viewportDidMove()));
    }
    Q_EMIT scrollerChanged();
    polish();
}

void ZVItemView::setMirrored(bool mirrored)
{
    if (m_isMirrored == mirrored)
        return;
    m_isMirrored = mirrored;
    m_restartsWhenMirrored = true;
    Q_EMIT mirroredChanged();
    polish();
}

void ZVItemView::viewportDidMove()
{
    polish();
}

// Cells

void ZVItemView::registerCell(const QString &identifier, const CellFactory &factory)
{
    m_factories.insert(identifier, factory);
}

ZVItemViewCell *ZVItemView::dequeueReusableCell(const QString &identifier)
{
    auto &waiting = m_reusable[identifier];
    if (!waiting.empty()) {
        auto *const cell = waiting.back();
        waiting.pop_back();
        cell->setVisible(true);
        return cell;
    }
    const auto factory = m_factories.value(identifier);
    auto *const cell = factory ? factory() : nullptr;
    if (!cell)
        return nullptr;
    ++m_cellCount;
    cell->m_view = this;
    cell->m_identifier = identifier;
    cell->setParent(this);
    cell->setParentItem(m_scroller ? m_scroller->property("contentItem").value<QQuickItem *>() : this);
    return cell;
}

ZVItemViewCell *ZVItemView::cellForRow(qint64 row) const
{
    const auto found = m_shown.find(row);
    return found == m_shown.end() ? nullptr : found->second;
}

std::vector<ZVItemViewCell *> ZVItemView::shownCells() const
{
    std::vector<ZVItemViewCell *> cells;
    for (const auto &[row, cell] : m_shown)
        cells.push_back(cell);
    return cells;
}

void ZVItemView::recycle(ZVItemViewCell *cell)
{
    cell->m_row = -1;
    cell->setCurrent(false);
    cell->prepareForReuse();
    m_reusable[cell->m_identifier].push_back(cell);
}

// Layout

void ZVItemView::reloadData()
{
    m_isDataStale = true;
    invalidateLayout();
}

void ZVItemView::invalidateLayout()
{
    m_isLayoutStale = true;
    polish();
}

void ZVItemView::insertItemAtEnd()
{
    if (m_isLayoutStale || metrics() != m_layout.metrics())
        m_isLayoutStale = true; // The next frame lays out everything, the new item too.
    else
        m_layout.append(sizeOfItem(m_layout.count()));
    polish();
}

void ZVItemView::updatePolish()
{
    layoutIfNeeded();
}

void ZVItemView::layoutIfNeeded()
{
    if (m_isLayingOut)
        return; // Called while a cell is being filled; polish() is already scheduled.
    const QScopedValueRollback busy(m_isLayingOut, true);
    if (std::exchange(m_isLayoutStale, false))
        placeItems();
    publishContentSize();
    // The start is at the right end of the content, which has moved.
    if (std::exchange(m_restartsWhenMirrored, false) && runsLeft())
        scrollToStart();
    updateCells();
}

void ZVItemView::placeItems()
{
    m_layout.start(metrics());
    const auto count = countItems();
    for (qint64 row = 0; row < count; ++row)
        m_layout.append(sizeOfItem(row));
    m_currentRow = std::clamp<qint64>(m_currentRow, 0, std::max<qint64>(count - 1, 0));
}

void ZVItemView::publishContentSize()
{
    const auto size = isVertical() ? QSizeF(width(), m_layout.length()) : QSizeF(contentLength(), height());
    if (m_contentSize == size)
        return;
    m_contentSize = size;
    m_restartsWhenMirrored = true;
    Q_EMIT contentSizeChanged();
}

void ZVItemView::updateCells()
{
    if (width() > 0 && height() > 0)
        fillViewport();
    else
        recycleOutside(0, 0); // Without an extent all items would be in the viewport.
    for (const auto &waiting : std::as_const(m_reusable)) {
        for (auto *const cell : waiting)
            cell->setVisible(false);
    }
    markCurrent();
}

/// A frame that creates cells fills the viewport only; the rows around it follow in a later frame.
void ZVItemView::fillViewport()
{
    const double margin = extent() * marginShare;
    const auto [firstSeen, endSeen] = m_layout.rowsBetween(offset(), offset() + extent());
    const auto [first, end] = m_layout.rowsBetween(offset() - margin, offset() + extent() + margin);
    recycleOutside(first, end);
    const bool isDataStale = std::exchange(m_isDataStale, false);
    const auto before = m_cellCount;
    updateRows(firstSeen, endSeen, isDataStale);
    if (m_cellCount > before) {
        recycleOutside(firstSeen, endSeen);
        QMetaObject::invokeMethod(this, &QQuickItem::polish, Qt::QueuedConnection);
    } else {
        updateRows(first, firstSeen, isDataStale);
        updateRows(std::max(first, endSeen), end, isDataStale);
    }
}

void ZVItemView::updateRows(qint64 first, qint64 end, bool isDataStale)
{
    for (qint64 row = first; row < end; ++row) {
        if (auto *const cell = cellForRow(row); cell && !isDataStale)
            placeCell(cell);
        else
            showRow(row);
    }
}

void ZVItemView::recycleOutside(qint64 first, qint64 end)
{
    std::erase_if(m_shown, [&](const auto &entry) {
        const bool isOutside = entry.first < first || entry.first >= end;
        if (isOutside)
            recycle(entry.second);
        return isOutside;
    });
}

void ZVItemView::showRow(qint64 row)
{
    // A row keeps its cell: the one recycled last is dequeued first.
    if (const auto shown = m_shown.find(row); shown != m_shown.end()) {
        recycle(shown->second);
        m_shown.erase(shown);
    }
    auto *const cell = cellForItem(row);
    if (!cell)
        return;
    cell->m_row = row;
    m_shown.emplace(row, cell);
    placeCell(cell);
}

/// Aligns to whole pixels of the screen: other positions look blurred.
void ZVItemView::placeCell(ZVItemViewCell *cell)
{
    const double pixels = window() ? window()->effectiveDevicePixelRatio() : 1;
    const auto snap = [&](double value) { return std::round(value * pixels) / pixels; };
    auto rect = m_layout.rect(cell->row());
    if (m_isMirrored)
        rect.moveLeft((isVertical() ? width() : contentLength()) - rect.right());
    const QPointF topLeft(snap(rect.left()), snap(rect.top()));
    cell->setPosition(topLeft);
    cell->setSize({snap(rect.right()) - topLeft.x(), snap(rect.bottom()) - topLeft.y()});
}

void ZVItemView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() == oldGeometry.size())
        return;
    m_restartsWhenMirrored = true;
    invalidateLayout();
}

// Scrolling

/// The scroller's margin before the first item and after the last.
double ZVItemView::margin() const
{
    return m_scroller ? m_scroller->property(isVertical() ? "topMargin" : "leftMargin").toDouble() : 0;
}

/// A row from right to left starts at the right edge, with few items too.
double ZVItemView::contentLength() const
{
    return runsLeft() ? std::max(m_layout.length(), extent() - 2 * margin()) : m_layout.length();
}

/// Distance from the start of the content, which is at the right for a row from right to left.
double ZVItemView::offset() const
{
    const double position = m_scroller ? m_scroller->property(isVertical() ? "contentY" : "contentX").toDouble() : 0;
    return runsLeft() ? contentLength() - extent() - position : position;
}

void ZVItemView::setOffset(double offset)
{
    if (!m_scroller)
        return;
    const double last = std::max(contentLength() - extent() + margin(), -margin());
    const double valid = std::clamp(offset, -margin(), last);
    QMetaObject::invokeMethod(m_scroller, "cancelFlick");
    m_scroller->setProperty(isVertical() ? "contentY" : "contentX",
                            runsLeft() ? contentLength() - extent() - valid : valid);
}

void ZVItemView::scrollToStart()
{
    setOffset(-margin());
}

void ZVItemView::scrollToRow(qint64 row)
{
    layoutIfNeeded();
    if (row < 0 || row >= m_layout.count())
        return;
    const auto rect = m_layout.rect(row);
    const auto &inset = m_layout.metrics().inset;
    const double start = (isVertical() ? rect.top() - inset.top() : rect.left() - inset.left()) - margin();
    const double end = (isVertical() ? rect.bottom() + inset.bottom() : rect.right() + inset.right()) + margin();
    if (start < offset())
        setOffset(start);
    else if (end > offset() + extent())
        setOffset(end - extent());
    layoutIfNeeded();
}

// Input

/// A press that stops a flick chooses nothing.
void ZVItemView::pressDidBegin()
{
    m_pressStopsMovement = m_scroller && m_scroller->property("moving").toBool();
}

void ZVItemView::cellWasTapped(qint64 row)
{
    if (std::exchange(m_pressStopsMovement, false))
        return;
    setCurrentRow(row);
    setShowsCurrent(false);
    if (activeFocusOnTab())
        forceActiveFocus(Qt::MouseFocusReason);
    select(row);
}

/// Queued: the delegate may drop the view, which must not happen inside a handler of the view.
void ZVItemView::select(qint64 row)
{
    QMetaObject::invokeMethod(
        this,
        [this, row] {
            if (row < m_layout.count())
                selectItem(row);
        },
        Qt::QueuedConnection);
}

void ZVItemView::setCurrentRow(qint64 row)
{
    if (row < 0 || row >= m_layout.count())
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
    for (const auto &[row, cell] : m_shown)
        cell->setCurrent(m_showsCurrent && row == m_currentRow);
}

qint64 ZVItemView::rowForKey(int key) const
{
    const auto row = m_currentRow;
    const int rightwards = m_isMirrored ? -1 : 1;
    switch (key) {
    case Qt::Key_Left:
        return isVertical() ? row - rightwards : m_layout.neighbour(row, -rightwards);
    case Qt::Key_Right:
        return isVertical() ? row + rightwards : m_layout.neighbour(row, rightwards);
    case Qt::Key_Up:
        return isVertical() ? m_layout.neighbour(row, -1) : m_layout.besides(row, -1);
    case Qt::Key_Down:
        return isVertical() ? m_layout.neighbour(row, 1) : m_layout.besides(row, 1);
    case Qt::Key_PageUp:
        return isVertical() ? rowOnePageOn(-1) : row;
    case Qt::Key_PageDown:
        return isVertical() ? rowOnePageOn(1) : row;
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return m_layout.count() - 1;
    default:
        return row;
    }
}

qint64 ZVItemView::rowOnePageOn(int direction) const
{
    auto row = m_currentRow;
    const auto limit = m_layout.rect(row).top() + direction * height();
    for (;;) {
        const auto next = m_layout.neighbour(row, direction);
        if (next == row || (m_layout.rect(next).top() - limit) * direction > 0)
            return row;
        row = next;
    }
}

bool ZVItemView::handleKey(QKeyEvent *event)
{
    layoutIfNeeded();
    if (m_layout.count() == 0)
        return false;
    m_showsCurrent = true;
    markCurrent();
    if (auto *const cell = cellForRow(m_currentRow); cell && cell->handleKey(event))
        return true;
    const auto key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space || key == Qt::Key_Select) {
        select(m_currentRow);
        return true;
    }
    const auto row = rowForKey(key);
    if (row == m_currentRow || row < 0 || row >= m_layout.count())
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
    setShowsCurrent(event->reason() != Qt::MouseFocusReason);
    if (m_showsCurrent)
        scrollToRow(m_currentRow);
}

void ZVItemView::focusOutEvent(QFocusEvent *event)
{
    QQuickItem::focusOutEvent(event);
    setShowsCurrent(false);
}

} // namespace zelvano
