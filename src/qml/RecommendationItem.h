#pragma once

#include "CellHost.h"
#include "Recommendations.h"
#include "ZVItemView.h"
#include <ZelvanoUI/ZVRecommendationViewFactory.h>

#include <QColor>
#include <QPointer>
#include <QQmlComponent>
#include <QQuickItem>
#include <qqmlintegration.h>

#include <memory>

namespace zelvano {

/// An item that a native view fills. Main thread.
///
/// Each session creates a new view, which stays after the session's end. The view handles the keyboard and describes
/// itself to assistive technology.
///
/// Items inside it stand over the view. Text and focus ring have the palette's colours "windowText" and "highlight".
class RecommendationItem : public QQuickItem, public ZVRecommendationViewDelegate, public CellHost
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

    /// How many videos, or rows of videos, are shown; 0 by default.
    Q_PROPERTY(int count READ count NOTIFY contentChanged FINAL)
    int count() const { return m_items ? static_cast<int>(m_items->itemCount()) : 0; }
    /// Height of all that is shown, in points, as far as it is laid out; 0 by default.
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY contentChanged FINAL)
    double contentHeight() const;
    /// Whether a session waits for its first video or its thumbnail; false by default.
    Q_PROPERTY(bool loading READ isLoading NOTIFY contentChanged FINAL)
    bool isLoading() const;
    /// Whether the service recommends no video; false by default.
    Q_PROPERTY(bool empty READ isEmpty NOTIFY contentChanged FINAL)
    bool isEmpty() const;
    Q_SIGNAL void contentChanged();

    /// The host's own look of a video: an Item with a required property "video" of type recommendedVideo. It fills the
    /// cell, which handles the input. Null, the default, for the library's look.
    Q_PROPERTY(QQmlComponent *delegate MEMBER m_delegate NOTIFY delegateChanged FINAL)
    Q_SIGNAL void delegateChanged();
    /// Radius of the cells, in points. Negative, the default, for one that follows the width of the cell.
    Q_PROPERTY(double cellRadius MEMBER m_cellRadius NOTIFY lookChanged FINAL)
    /// Colour of a cell without a picture; "#2c313d" by default.
    Q_PROPERTY(QColor cellColor MEMBER m_cellColor NOTIFY lookChanged FINAL)
    /// Colour of the titles; white by default.
    Q_PROPERTY(QColor titleColor MEMBER m_titleColor NOTIFY lookChanged FINAL)
    Q_SIGNAL void lookChanged();

    /// The viewer chose a video here. The session's signal comes first. The player does not switch by itself.
    Q_SIGNAL void videoSelected(const zelvano::RecommendedVideo &video);

protected:
    explicit RecommendationItem(ZVRecommendationViewFactory::Type type);

    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void didSelecteRecommendation(const std::shared_ptr<ZVVideoParams> &video) override;
    bool showInCell(QQuickItem *cell, const std::shared_ptr<ZVVideoParams> &video) override;
    void begin();
    void leave();
    void clear();
    void fillWithView();
    void followView();
    void applyLook();

    const ZVRecommendationViewFactory::Type m_type;
    /// For the view, which holds its delegate weakly; owns nothing.
    const std::shared_ptr<ZVRecommendationViewDelegate> m_self{this, [](auto *) {}};
    QPointer<Recommendations> m_recommendations;
    std::weak_ptr<ZelvanoViewController> m_controller;
    std::shared_ptr<ZVRecommendationView> m_view;
    QPointer<ZVItemView> m_items;
    QPointer<QQmlComponent> m_delegate;
    double m_cellRadius = -1;
    QColor m_cellColor = QColor(0x2c, 0x31, 0x3d);
    QColor m_titleColor = Qt::white;
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
