#include <ZelvanoUI/ZVTopRecommendationView.h>

#include "InterfaceResource.h"
#include "LayoutCommand.h"
#include "Logging.h"
#include "MainQueue.h"
#include "OverlayKeys.h"
#include "WebEngine.h"

#include <QPointer>
#include <QPropertyAnimation>
#include <QRegularExpression>
#include <QTimer>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto swipeDuration = 250; // Milliseconds.

} // namespace

struct ZVTopRecommendationView::Private
{
    /// A call in which the host may end the overlay, which is deleted after the outermost one.
    class Call
    {
    public:
        explicit Call(Private *overlay) : d(overlay) { ++d->callsUnderWay; }
        Q_DISABLE_COPY_MOVE(Call)
        ~Call()
        {
            if (--d->callsUnderWay == 0 && d->endsAfterCalls)
                d->q->deleteLater();
        }

    private:
        Private *const d;
    };

    explicit Private(ZVTopRecommendationView *overlay) : q(overlay), keys(overlay) {}

    QQuickItem *root() const { return content ? content->root() : nullptr; }
    void pushSuggestions();
    void carryOut(const LayoutCommand &command);
    void tearContentDown();
    void comeToFront();

    ZVTopRecommendationView *const q;
    OverlayKeys keys;
    bool isReady = false;
    bool isFirstLoad = true;
    bool isHidden = false;
    bool hasFailed = false; ///< The page could not be loaded.
    int callsUnderWay = 0;
    bool endsAfterCalls = false;
    QUrl url;
    QString jsonSuggestions;
    std::weak_ptr<ZVTopRecommendationViewDelegate> delegate;
    std::unique_ptr<InterfaceResource> content;
    QPointer<QQuickItem> webView;
};

ZVTopRecommendationView::ZVTopRecommendationView(const QRectF &frame) : d(std::make_unique<Private>(this))
{
    setFlag(ItemIsFocusScope);
    setFrame(frame);
    setHidden(true);
    setClip(true);
    if (!canShowWebPages())
        return;
    d->content = std::make_unique<InterfaceResource>(u"ZVTopRecommendationView"_s, this);
    d->webView = d->content->outlet(u"webView"_s);
    protectHost(d->webView);
    if (auto *root = d->root()) {
        root->setParentItem(this);
        root->setSize(size());
    }
}

ZVTopRecommendationView::~ZVTopRecommendationView() = default;

bool ZVTopRecommendationView::isReady() const
{
    return d->isReady;
}

bool ZVTopRecommendationView::isFirstLoad() const
{
    return d->isFirstLoad;
}

void ZVTopRecommendationView::setIsFirstLoad(bool first)
{
    d->isFirstLoad = first;
}

QQuickItem *ZVTopRecommendationView::contentView() const
{
    return d->root();
}

QQuickItem *ZVTopRecommendationView::webView() const
{
    return d->webView;
}

QUrl ZVTopRecommendationView::url() const
{
    return d->url;
}

void ZVTopRecommendationView::setUrl(const QUrl &url)
{
    const bool isFirst = d->url.isEmpty() && url.isValid();
    if (isFirst)
        d->url = url;
    if (d->webView && (isFirst || std::exchange(d->hasFailed, false)))
        d->webView->setProperty("url", d->url);
}

QString ZVTopRecommendationView::jsonSuggestions() const
{
    return d->jsonSuggestions;
}

void ZVTopRecommendationView::setJsonSuggestions(const QString &json)
{
    d->jsonSuggestions = json;
    // The task reads the text when it runs: after two quick calls both tasks push the later text.
    MainQueue::shared().post([self = QPointer(this)] {
        if (self)
            self->d->pushSuggestions();
    });
}

void ZVTopRecommendationView::Private::pushSuggestions()
{
    if (!webView || url.isEmpty())
        return;
    const auto argument = jsonSuggestions.isNull() ? u"(null)"_s : jsonSuggestions;
    const QString script = "updateSuggestions("_L1 + argument + ");"_L1;
    QMetaObject::invokeMethod(webView, "runJavaScript", Q_ARG(QString, script));
}

std::shared_ptr<ZVTopRecommendationViewDelegate> ZVTopRecommendationView::delegate() const
{
    return d->delegate.lock();
}

void ZVTopRecommendationView::setDelegate(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate)
{
    if (delegate)
        d->delegate = delegate;
    else
        d->tearContentDown();
}

/// Keeps the objects until the overlay is deleted: this may run inside a signal of one of them.
void ZVTopRecommendationView::Private::tearContentDown()
{
    if (!root())
        return;
    keys.giveFocusBack();
    root()->setProperty("owner", QVariant::fromValue<QObject *>(nullptr));
    if (webView) {
        QMetaObject::invokeMethod(webView, "stop");
        webView->setParentItem(nullptr);
    }
    webView = nullptr;
    root()->setParentItem(nullptr);
}

bool ZVTopRecommendationView::isHidden() const
{
    return d->isHidden;
}

void ZVTopRecommendationView::setHidden(bool hidden)
{
    const Private::Call call(d.get());
    if (hidden)
        d->keys.giveFocusBack();
    else if (const auto owner = delegate())
        owner->recommendationViewDidLoad();
    d->isHidden = hidden;
    setVisible(!hidden);
    if (d->isHidden != hidden) // A handler of visibleChanged hid the overlay again.
        return;
    setEnabled(!hidden);
    if (!hidden)
        d->comeToFront();
}

/// The overlay that was shown last is above the others and gets the keys before them.
void ZVTopRecommendationView::Private::comeToFront()
{
    const auto siblings = q->parentItem() ? q->parentItem()->childItems() : QList<QQuickItem *>();
    if (!siblings.isEmpty() && siblings.last() != q)
        q->stackAfter(siblings.last());
    keys.comeFirst();
}

void ZVTopRecommendationView::setFrame(const QRectF &frame)
{
    setPosition(frame.topLeft());
    setSize(frame.size());
}

void ZVTopRecommendationView::didSwipe(int direction)
{
    const bool isLeft = direction == static_cast<int>(UISwipeGestureRecognizerDirection::Left);
    const double superviewWidth = parentItem() ? parentItem()->width() : 0;
    auto *animation = new QPropertyAnimation(this, "x", this);
    animation->setDuration(swipeDuration);
    animation->setEasingCurve(QEasingCurve::OutQuad);
    // Intended: to the right the overlay ends a whole width beyond the edge.
    animation->setEndValue(isLeft ? -width() : superviewWidth + width());
    // The frame stays outside; the owner sets a new one when it shows the overlay again.
    connect(animation, &QPropertyAnimation::finished, this, [this] { setHidden(true); });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void ZVTopRecommendationView::dismissPressed()
{
    setHidden(true);
}

bool ZVTopRecommendationView::shouldStartLoadWithRequest(const QUrl &url)
{
    const auto command = layoutCommand(url);
    if (!command) {
        constexpr qsizetype longest = 200; // The page decides on the text.
        if (const auto reason = url.errorString(); !reason.isEmpty())
            ZV_LOG("Error: the layout page sent an invalid address: " << reason.left(longest));
        return true;
    }
    const Private::Call call(d.get());
    d->carryOut(*command);
    return false;
}

void ZVTopRecommendationView::Private::carryOut(const LayoutCommand &command)
{
    Q_EMIT q->commandReceived(command.text);
    if (command.kind == LayoutCommand::Kind::Ready) {
        isReady = true;
        pushSuggestions();
    } else if (command.position) {
        if (const auto owner = delegate.lock())
            owner->didSelecteRecommendation(q, *command.position);
        isFirstLoad = true;
    } else if (command.kind == LayoutCommand::Kind::Index) {
        ZV_LOG("Error: the layout page sent " << command.text.left(100) << " without a position");
    }
}

void ZVTopRecommendationView::pageDidFail(int code, const QString &reason)
{
    if (d->isReady)
        return;
    d->hasFailed = true;
    static const QRegularExpression tags(u"<[^>]*>"_s); // Chromium writes its reasons as HTML.
    ZV_LOG("Error: the layout page cannot be loaded (" << code << "): " << QString(reason).remove(tags).simplified());
}

void ZVTopRecommendationView::rendererDidEnd(int status, int exitCode)
{
    logRendererEnd(status, exitCode);
    d->isReady = false;
    QTimer::singleShot(reloadDelay, this, [this] {
        if (d->webView)
            d->webView->setProperty("url", d->url);
    });
    setHidden(true);
}

void ZVTopRecommendationView::end()
{
    if (d->callsUnderWay > 0)
        d->endsAfterCalls = true; // deleteLater() would act too early, in a nested event loop.
    else
        deleteAfterHandlers(this);
}

void ZVTopRecommendationView::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange)
        d->keys.followWindow(data.window);
    QQuickItem::itemChange(change, data);
}

void ZVTopRecommendationView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (d->root())
        d->root()->setSize(newGeometry.size());
}

} // namespace zelvano

#include "ZelvanoUI/moc_ZVTopRecommendationView.cpp"
