#pragma once

#include "Recommendations.h"
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

#include <memory>

namespace zelvano {

/// An item that a native view fills. Main thread.
///
/// Each session creates a new view, which stays after the session's end. The view handles the keyboard and describes
/// itself to assistive technology.
class RecommendationItem : public QQuickItem, public ZVRecommendationViewDelegate
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    ~RecommendationItem() override;

    /// The session whose videos are shown. Without one the last videos stay.
    Q_PROPERTY(zelvano::Recommendations *recommendations READ recommendations WRITE setRecommendations NOTIFY
                   recommendationsChanged FINAL)
    Recommendations *recommendations() const { return m_recommendations; }
    void setRecommendations(Recommendations *recommendations);
    Q_SIGNAL void recommendationsChanged();

    /// The viewer chose a video here. The session's signal comes first. The player does not switch by itself.
    Q_SIGNAL void videoSelected(const zelvano::RecommendedVideo &video);

    /// Creates an empty view for a new session.
    void begin(const std::shared_ptr<ZelvanoViewController> &controller);
    /// The view receives no more recommendations.
    void leave();
    /// Removes the view with its videos.
    void clear();

protected:
    explicit RecommendationItem(ZVRecommendationViewFactory::Type type);

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) override;
    void fillWithView();

    const ZVRecommendationViewFactory::Type m_type;
    /// For the view, which holds its delegate weakly; owns nothing.
    const std::shared_ptr<ZVRecommendationViewDelegate> m_self{this, [](auto *) {}};
    QPointer<Recommendations> m_recommendations;
    std::weak_ptr<ZelvanoViewController> m_controller;
    std::shared_ptr<ZVRecommendationView> m_view;
};

// The QML tools find a base class by its full name only.

/// The recommended videos except the first, in two columns.
class RecommendationList : public zelvano::RecommendationItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    RecommendationList() : RecommendationItem(ZVRecommendationViewFactory::List) {}
};

/// The recommended videos in one row per category.
class RecommendationCategories : public zelvano::RecommendationItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    RecommendationCategories() : RecommendationItem(ZVRecommendationViewFactory::Category) {}
};

} // namespace zelvano
