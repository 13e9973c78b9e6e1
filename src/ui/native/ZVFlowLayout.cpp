#include "ZVFlowLayout.h"

#include <algorithm>
#include <cmath>

namespace zelvano {

namespace {

constexpr double tolerance = 0.001; // For rounding: columns that just fit do fit.

} // namespace

void ZVFlowLayout::start(const Metrics &metrics)
{
    m_metrics = metrics;
    m_rects.clear();
    m_lines.clear();
    m_across = 0;
}

void ZVFlowLayout::append(QSizeF size)
{
    const auto &inset = m_metrics.inset;
    const double across = isVertical() ? size.width() : size.height();
    const double along = isVertical() ? size.height() : size.width();
    const double first = isVertical() ? inset.left() : inset.top();
    const double last = m_metrics.breadth - (isVertical() ? inset.right() : inset.bottom());
    if (m_lines.empty() || m_across + across > last + tolerance) {
        const double start =
            m_lines.empty() ? (isVertical() ? inset.top() : inset.left()) : m_lines.back().end + m_metrics.lineSpacing;
        m_lines.push_back({start, start, count()});
        m_across = first;
    }
    auto &line = m_lines.back();
    m_rects.emplace_back(isVertical() ? QPointF(m_across, line.start) : QPointF(line.start, m_across), size);
    line.end = std::max(line.end, line.start + along);
    m_across += across + m_metrics.itemSpacing;
}

double ZVFlowLayout::length() const
{
    if (m_lines.empty())
        return 0;
    return m_lines.back().end + (isVertical() ? m_metrics.inset.bottom() : m_metrics.inset.right());
}

std::pair<qint64, qint64> ZVFlowLayout::rowsBetween(double from, double to) const
{
    const auto begin =
        std::partition_point(m_lines.begin(), m_lines.end(), [&](auto &line) { return line.end < from; });
    const auto end = std::partition_point(begin, m_lines.end(), [&](auto &line) { return line.start <= to; });
    if (begin == end)
        return {0, 0};
    return {begin->firstRow, end == m_lines.end() ? count() : end->firstRow};
}

qint64 ZVFlowLayout::neighbour(qint64 row, int lines) const
{
    const auto target = static_cast<qint64>(lineOf(row)) + lines;
    if (target < 0 || target >= static_cast<qint64>(m_lines.size()))
        return row;
    const auto line = static_cast<std::size_t>(target);
    const auto distance = [&](qint64 other) {
        const auto way = rect(other).center() - rect(row).center();
        return std::abs(isVertical() ? way.x() : way.y());
    };
    qint64 nearest = m_lines[line].firstRow;
    for (qint64 other = nearest; other < endOf(line); ++other) {
        if (distance(other) < distance(nearest))
            nearest = other;
    }
    return nearest;
}

qint64 ZVFlowLayout::besides(qint64 row, int step) const
{
    const auto line = lineOf(row);
    return std::clamp(row + step, m_lines[line].firstRow, endOf(line) - 1);
}

std::size_t ZVFlowLayout::lineOf(qint64 row) const
{
    const auto after =
        std::partition_point(m_lines.begin(), m_lines.end(), [&](auto &line) { return line.firstRow <= row; });
    return static_cast<std::size_t>(after - m_lines.begin()) - 1;
}

qint64 ZVFlowLayout::endOf(std::size_t line) const
{
    return line + 1 < m_lines.size() ? m_lines[line + 1].firstRow : count();
}

} // namespace zelvano
