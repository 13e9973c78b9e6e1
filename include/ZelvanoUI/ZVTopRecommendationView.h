#pragma once

#include <ZelvanoUI/ZVTopRecommendationViewDelegate.h>
#include <ZelvanoUI/zelvanoui_export.h>

#include <QPointer>
#include <QQuickItem>
#include <QUrl>

#include <memory>

namespace zelvano {

class InterfaceResource;
class ZVTopRecommendationContentView;
struct LayoutCommand;

/// The directions a swipe recogniser reports.
enum class UISwipeGestureRecognizerDirection { Right = 1, Left = 2 };

/// The overlay: recommendations as a web page over the video.
///
/// The page talks to it by navigating to "zelvano://ready" and "zelvano://index?N", which are commands and never load;
/// it talks to the page by calling its function updateSuggestions with the list of videos. It starts hidden, takes
/// input only while it is shown, and gives the keyboard focus back when it is hidden. Main thread.
class ZELVANOUI_EXPORT ZVTopRecommendationView : public QQuickItem
{
    Q_OBJECT

public:
    /// Needs QtWebEngineQuick::initialize() to have been called before the application object was made. Without web
    /// engine or interface resource the log says so, and it stays an empty view that never becomes ready.
    explicit ZVTopRecommendationView(const QRectF &frame);
    ~ZVTopRecommendationView() override;

    /// True once the page has sent the ready command; never false again.
    bool isReady() const { return m_ready; }
    /// True from the beginning, and set again by each selection; nothing in the library reads it.
    bool isFirstLoad() const { return m_isFirstLoad; }
    void setIsFirstLoad(bool first) { m_isFirstLoad = first; }

    /// The layout page. The first valid one is loaded, later ones are ignored.
    QUrl url() const { return m_url; }
    void setUrl(const QUrl &url);
    /// The videos as JSON text, handed to the page now and again when it becomes ready; null before the first.
    QString jsonSuggestions() const { return m_jsonSuggestions; }
    void setJsonSuggestions(const QString &json);

    std::shared_ptr<ZVTopRecommendationViewDelegate> delegate() const { return m_delegate.lock(); }
    /// Null takes the page down for good and leaves the delegate as it was.
    void setDelegate(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate);

    bool isHidden() const { return m_hidden; }
    /// Showing tells the delegate first.
    void setHidden(bool hidden);

    /// In the superview's coordinates, points.
    QRectF frame() const { return {position(), size()}; }
    void setFrame(const QRectF &frame);
    /// Points by which the page's corners are rounded.
    Q_PROPERTY(double cornerRadius READ cornerRadius CONSTANT FINAL)
    double cornerRadius() const { return 5.0; }

    ZVTopRecommendationContentView *contentView() const;
    QQuickItem *webView() const { return m_webView; }

    // Actions of the interface resource.
    Q_INVOKABLE void didSwipe(int direction);
    Q_INVOKABLE void dismissPressed();
    /// Swipes go on beside the page's own gestures.
    Q_INVOKABLE bool shouldRecognizeSimultaneously() const { return true; }
    /// The bridge: false for a command, which is carried out, true for everything else.
    Q_INVOKABLE bool shouldStartLoadWithRequest(const QUrl &url);

    /// Deletes the overlay as soon as neither the page nor the event loop is inside it.
    void end();

Q_SIGNALS:
    /// The page sent a command, which is about to be carried out. For inspectors.
    void commandReceived(const QString &command);

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void pushSuggestions();
    void carryOut(const LayoutCommand &command);
    void selectRecommendation(const LayoutCommand &command);
    void followFocus(QQuickItem *focused);
    void giveFocusBack();
    void tearContentDown();

    bool m_ready = false;
    bool m_isFirstLoad = true;
    bool m_hidden = false;
    int m_answersUnderWay = 0;
    bool m_endsAfterAnswer = false;
    QUrl m_url;
    QString m_jsonSuggestions;
    std::weak_ptr<ZVTopRecommendationViewDelegate> m_delegate;
    std::unique_ptr<InterfaceResource> m_content;
    QPointer<QQuickItem> m_webView;
    QPointer<QQuickItem> m_lastFocusOutside;
    QMetaObject::Connection m_focusConnection;
};

} // namespace zelvano
