#pragma once

#include <QMarginsF>
#include <QRectF>

#include <utility>
#include <vector>

namespace zelvano {

/// Places items in lines, one after another: a line takes as many as fit, and is as high as its highest. Points.
/// Adding one costs the same however many there are.
class ZVFlowLayout
{
public:
    /// Lengths in points; an inset or a spacing that is not given is 0.
    struct Metrics
    {
        Qt::Orientation direction = Qt::Vertical; ///< In which the lines follow each other.
        double breadth = 0;                       ///< Of the view, across that direction.
        QMarginsF inset;
        double lineSpacing = 0;
        double itemSpacing = 0;

        friend bool operator==(const Metrics &, const Metrics &) = default;
    };

    /// Begins anew, without items.
    void start(const Metrics &metrics);
    const Metrics &metrics() const { return m_metrics; }
    void append(QSizeF size);

    qint64 count() const { return static_cast<qint64>(m_rects.size()); }
    QRectF rect(qint64 row) const { return m_rects[static_cast<std::size_t>(row)]; }
    /// Along the direction, insets included; 0 without items.
    double length() const;
    /// The rows of all lines that touch the stretch along the direction: from the first to before the second.
    std::pair<qint64, qint64> rowsBetween(double from, double to) const;
    /// The row above or below (-1, 1), that is, in the line before or after, which stands nearest; the same at an end.
    qint64 neighbour(qint64 row, int lines) const;
    /// The row before or after (-1, 1) in the same line; the same at its end.
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
    double m_across = 0; ///< Where the next item of the last line stands.
};

} // namespace zelvano
