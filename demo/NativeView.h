#pragma once

#include <ZelvanoUI/ZVRecommendationView.h>

#include <QPointer>
#include <QQuickItem>

#include <memory>

namespace zelvano {
class ZVItemView;
class ZVItemViewCell;
} // namespace zelvano

namespace demo {

/// The native recommendation view on the host's screen.
class NativeView
{
public:
    /// "list", "category", or "none" for no view at all.
    explicit NativeView(const QString &kind);

    std::shared_ptr<zelvano::ZVRecommendationView> view() const { return m_view; }
    /// Fills the place, from now on.
    void placeIn(QQuickItem *place);
    /// The centre in the window of the cell with this number, counted from 0 and row by row, after scrolling to it.
    /// Null when there is no such cell.
    std::optional<QPointF> centreOfCell(qint64 number) const;

private:
    zelvano::ZVItemViewCell *scrollToCell(zelvano::ZVItemView *items, qint64 number) const;

    std::shared_ptr<zelvano::ZVRecommendationView> m_view;
    QPointer<QQuickItem> m_place;
};

} // namespace demo
