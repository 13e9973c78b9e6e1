#include <ZelvanoUI/ZVTopRecommendationView.h>

#include "InterfaceResource.h"
#include "LayoutCommand.h"
#include "Logging.h"
#include "MainQueue.h"
#include "WebEngine.h"
#include "ZVTopRecommendationContentView.h"

#include <QPropertyAnimation>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QThread>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto swipeDuration = 250; // Milliseconds.

} // namespace

ZVTopRecommendationView::ZVTopRecommendationView(const QRectF &frame)
{
    setFlag(ItemIsFocusScope);
    setFrame(frame);
    setHidden(true);
    setClip(true);
    static const int registered =
        qmlRegisterType<ZVTopRecommendationContentView>("ZelvanoUI.Interface", 1, 0, "ZVTopRecommendationContentView");
    Q_UNUSED(registered)
    if (!canShowWebPages())
        return;
    m_content = std::make_unique<InterfaceResource>(u"ZVTopRecommendationView"_s, this);
    m_webView = m_content->outlet(u"webView"_s);
    if (auto *root = m_content->root()) {
        root->setParentItem(this);
        root->setSize(size());
    }
}

ZVTopRecommendationView::~ZVTopRecommendationView()
{
    disconnect(m_focusConnection);
}

ZVTopRecommendationContentView *ZVTopRecommendationView::contentView() const
{
    return m_content ? qobject_cast<ZVTopRecommendationContentView *>(m_content->root()) : nullptr;
}

void ZVTopRecommendationView::setUrl(const QUrl &url)
{
    if (!m_url.isEmpty() || !url.isValid())
        return;
    m_url = url;
    if (m_webView)
        m_webView->setProperty("url", url);
}

void ZVTopRecommendationView::setJsonSuggestions(const QString &json)
{
    m_jsonSuggestions = json;
    // Reads the text when it runs: of two quick calls both push the later one.
    MainQueue::shared().post([self = QPointer(this)] {
        if (self)
            self->pushSuggestions();
    });
}

/// Before the page is ready there is no such function, and nothing happens.
void ZVTopRecommendationView::pushSuggestions()
{
    if (!m_webView)
        return;
    const auto argument = m_jsonSuggestions.isNull() ? u"(null)"_s : m_jsonSuggestions;
    const QString script = "updateSuggestions("_L1 + argument + ");"_L1;
    QMetaObject::invokeMethod(m_webView, "runJavaScript", Q_ARG(QString, script));
}

void ZVTopRecommendationView::setDelegate(const std::shared_ptr<ZVTopRecommendationViewDelegate> &delegate)
{
    if (delegate)
        m_delegate = delegate;
    else
        tearContentDown();
}

/// The tree itself ends with the overlay: this may run inside one of its signals.
void ZVTopRecommendationView::tearContentDown()
{
    auto *content = m_content ? m_content->root() : nullptr;
    if (!content)
        return;
    giveFocusBack();
    content->setProperty("owner", QVariant::fromValue<QObject *>(nullptr));
    if (m_webView) {
        QMetaObject::invokeMethod(m_webView, "stop");
        m_webView->setParentItem(nullptr);
    }
    m_webView = nullptr;
    content->setParentItem(nullptr);
}

void ZVTopRecommendationView::setHidden(bool hidden)
{
    if (!hidden) {
        if (const auto owner = delegate())
            owner->recommendationViewDidLoad();
    } else {
        giveFocusBack();
    }
    m_hidden = hidden;
    setVisible(!hidden);
    setEnabled(!hidden);
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
    // To the right it goes a whole width further than it must.
    animation->setEndValue(isLeft ? -width() : superviewWidth + width());
    // The frame stays outside; the owner gives a fresh one when it shows the overlay again.
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
    if (!command)
        return true;
    ++m_answersUnderWay;
    carryOut(*command);
    if (--m_answersUnderWay == 0 && m_endsAfterAnswer)
        deleteLater();
    return false;
}

void ZVTopRecommendationView::carryOut(const LayoutCommand &command)
{
    Q_EMIT commandReceived(command.text);
    if (command.kind == LayoutCommand::Kind::Ready) {
        m_ready = true;
        pushSuggestions();
    } else if (command.kind == LayoutCommand::Kind::Index) {
        selectRecommendation(command);
    }
}

void ZVTopRecommendationView::end()
{
    if (m_answersUnderWay > 0)
        m_endsAfterAnswer = true; // The bridge sees to it: a nested event loop would do it too early.
    else if (QThread::currentThread()->loopLevel() > 0)
        deleteLater();
    else
        delete this; // No event loop runs that could do it later.
}

void ZVTopRecommendationView::selectRecommendation(const LayoutCommand &command)
{
    if (!command.position) {
        ZV_LOG("Error: the layout page sent " << command.text.left(100) << " without a position");
        return;
    }
    if (const auto owner = delegate())
        owner->didSelecteRecommendation(this, *command.position);
    m_isFirstLoad = true;
}

void ZVTopRecommendationView::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange) {
        disconnect(m_focusConnection);
        if (data.window) {
            const auto follow = [this, window = data.window] { followFocus(window->activeFocusItem()); };
            m_focusConnection = connect(data.window, &QQuickWindow::activeFocusItemChanged, this, follow);
            follow();
        }
    }
    QQuickItem::itemChange(change, data);
}

void ZVTopRecommendationView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (m_content && m_content->root())
        m_content->root()->setSize(newGeometry.size());
}

void ZVTopRecommendationView::followFocus(QQuickItem *focused)
{
    if (focused && focused != this && !isAncestorOf(focused))
        m_lastFocusOutside = focused;
}

void ZVTopRecommendationView::giveFocusBack()
{
    if (!hasActiveFocus())
        return;
    if (m_lastFocusOutside)
        m_lastFocusOutside->forceActiveFocus(Qt::OtherFocusReason);
    else
        setFocus(false);
}

} // namespace zelvano
