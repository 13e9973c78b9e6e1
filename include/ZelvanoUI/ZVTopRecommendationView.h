#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QQuickItem>
#include <QUrl>

#include <memory>

namespace zelvano {

class ZVTopRecommendationView;

/// Directions of a swipe.
enum class UISwipeGestureRecognizerDirection { Right = 1, Left = 2 };

/// The owner of the overlay. Main thread.
class ZELVANOUI_EXPORT ZVTopRecommendationViewDelegate
{
public:
    virtual ~ZVTopRecommendationViewDelegate() = default;

    /// The viewer chose the recommendation at this position of the page's list. The page sends the number: it may be
    /// negative or past the end.
    virtual void didSelecteRecommendation(ZVTopRecommendationView *view, qint64 index) = 0;
    /// Declared for owners; the overlay never calls it.
    virtual void viewDidDismiss(ZVTopRecommendationView *view) = 0;
    /// Called each time before the overlay is shown.
    virtual void recommendationViewDidLoad() {}
};

/// The overlay: recommendations as a web page over the video.
///
/// The page sends commands by navigating to "zelvano://ready" and "zelvano://index?N"; these addresses never load. The
/// overlay calls the page's function updateSuggestions with the list of videos. It starts hidden, takes input only
/// while shown, and returns the keyboard focus when hidden. Escape hides the overlay of the window that was shown last,
/// before the host's own shortcuts for Escape; a dialog that has the focus above the overlay keeps its keys. Main
/// thread.
class ZELVANOUI_EXPORT ZVTopRecommendationView : public QQuickItem
{
    Q_OBJECT

public:
    /// Call QtWebEngineQuick::initialize() before you create the application object. Without it, or without the
    /// interface resource, the overlay logs an error, stays empty and never becomes ready.
    explicit ZVTopRecommendationView(const QRectF &frame);
    ~ZVTopRecommendationView() override;

    /// True from the page's ready command on, until the page's renderer process ends.
    bool isReady() const;
    /// Starts true and becomes true again with each selection. The library does not read it.
    bool isFirstLoad() const;
    void setIsFirstLoad(bool first);

    /// The layout page. The overlay loads the first valid URL and ignores later ones. After a failed load each call
    /// loads the first URL again.
    QUrl url() const;
    void setUrl(const QUrl &url);
    /// The videos as JSON text. The page gets them at once, if it has loaded, and with each of its ready commands.
    /// Null before the first.
    QString jsonSuggestions() const;
    void setJsonSuggestions(const QString &json);

    std::shared_ptr<ZVTopRecommendationViewDelegate> delegate() const;
    /// Held weakly. Null removes the page for good and keeps the delegate.
    void setDelegate(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate);

    bool isHidden() const;
    /// Calls recommendationViewDidLoad() before the overlay is shown.
    void setHidden(bool hidden);

    /// In the coordinates of the parent item.
    QRectF frame() const { return {position(), size()}; }
    void setFrame(const QRectF &frame);
    /// Radius of the page's corners, in points. Qt Quick's software renderer does not round them.
    Q_PROPERTY(double cornerRadius READ cornerRadius CONSTANT FINAL)
    double cornerRadius() const { return 5.0; }

    /// The root of the interface resource, a ZVTopRecommendationContentView; null without it.
    QQuickItem *contentView() const;
    /// The WebEngineView; null without one, and after setDelegate(nullptr).
    QQuickItem *webView() const;

    // Called by the interface resource.
    Q_INVOKABLE void didSwipe(int direction);
    Q_INVOKABLE void dismissPressed();
    /// Always true: swipes work beside the page's own gestures.
    Q_INVOKABLE bool shouldRecognizeSimultaneously() const { return true; }
    /// Runs a command of the page and returns false; returns true for every other address.
    Q_INVOKABLE bool shouldStartLoadWithRequest(const QUrl &url);
    /// The page could not be loaded. Does nothing while the page is ready.
    Q_INVOKABLE void pageDidFail(int code, const QString &reason);
    /// The page's renderer process ended. Hides the overlay and loads the page again a moment later.
    Q_INVOKABLE void rendererDidEnd(int status, int exitCode);

    /// Deletes the overlay as soon as neither the page nor the event loop runs code of it.
    void end();

Q_SIGNALS:
    /// The page sent a command, which runs next. For inspectors.
    void commandReceived(const QString &command);

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
