#pragma once

#include <QMarginsF>
#include <QRectF>

#include <utility>
#include <vector>

namespace zelvano {

/// Places items in lines. A line takes as many items as fit and is as high as its highest. In points. The cost of
/// adding an item does not depend on their number.
class ZVFlowLayout
{
public:
    struct Metrics
    {
        Qt::Orientation direction = Qt::Vertical; ///< From line to line.
        double breadth = 0;                       ///< The view's extent across that direction.
        QMarginsF inset;
        double lineSpacing = 0;
        double itemSpacing = 0;

        friend bool operator==(const Metrics &, const Metrics &) = default;
    };

    /// Removes all items.
    void start(const Metrics &metrics);
    const Metrics &metrics() const { return m_metrics; }
    void append(QSizeF size);

    qint64 count() const { return static_cast<qint64>(m_rects.size()); }
    QRectF rect(qint64 row) const { return m_rects[static_cast<std::size_t>(row)]; }
    /// Extent along the direction, with insets; 0 without items.
    double length() const;
    /// The rows [first, second) of all lines that touch this range along the direction.
    std::pair<qint64, qint64> rowsBetween(double from, double to) const;
    /// The nearest row in the line before or after (-1, 1); the same row at an end.
    qint64 neighbour(qint64 row, int lines) const;
    /// The row before or after (-1, 1) in the same line; the same row at an end.
    qint64 besides(qint64 row, int step) const;

private:
    struct Line
    {
        double start = 0;
        double end = 0;
        qint64 firstRow = 0;
    };

    bool isVertical() const { return m_metrics.direction == Qt::Vertical; }
    std::size_t lineOf(qint64 row) const;
    qint64 endOf(std::size_t line) const;

    Metrics m_metrics;
    std::vector<QRectF> m_rects;
    std::vector<Line> m_lines;
    double m_across = 0; ///< The position of the next item in the last line.
};

} // namespace zelvano
