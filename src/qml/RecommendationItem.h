#pragma once

#include "Recommendations.h"
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <QPointer>
#include <QQuickItem>
#include <qqmlintegration.h>

#include <memory>

namespace zelvano {

/// A place for a native view, which fills it: what they have in common. Main thread.
///
/// Each session has a view of its own, which stays after its end and is replaced by the next one's. Keyboard and
/// accessibility are the view's.
class RecommendationItem : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    ~RecommendationItem() override;

    /// Whose videos are shown; null, or destroyed, for none further.
    Q_PROPERTY(zelvano::Recommendations *recommendations READ recommendations WRITE setRecommendations NOTIFY
                   recommendationsChanged FINAL)
    Recommendations *recommendations() const { return m_recommendations; }
    void setRecommendations(Recommendations *recommendations);
    Q_SIGNAL void recommendationsChanged();

    /// The viewer picked a video here; the session has told of it before. The player does not switch by itself.
    Q_SIGNAL void videoSelected(const zelvano::RecommendedVideo &video);

    /// Another session: an empty view. The controller is told of its picks.
    void begin(const std::shared_ptr<ZVRecommendationViewDelegate> &controller);
    void show(const ZVRecommendation &recommendation);

protected:
    explicit RecommendationItem(ZVRecommendationViewFactory::Type type);

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    class Picks;

    void fillWithView();

    const ZVRecommendationViewFactory::Type m_type;
    QPointer<Recommendations> m_recommendations;
    std::shared_ptr<Picks> m_picks;
    std::shared_ptr<ZVRecommendationView> m_view;
};

// The base classes are named in full for the sake of the QML tools.

/// The recommended videos but the first, in two columns.
class RecommendationList : public zelvano::RecommendationItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    RecommendationList() : RecommendationItem(ZVRecommendationViewFactory::List) {}
};

/// The recommended videos in rows, one for each category.
class RecommendationCategories : public zelvano::RecommendationItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    RecommendationCategories() : RecommendationItem(ZVRecommendationViewFactory::Category) {}
};

} // namespace zelvano
