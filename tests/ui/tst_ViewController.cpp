#include "Application.h"
#include "Device.h"
#include "EngineFixture.h"
#include "PlayerEvents.h"
#include "WebPage.h"
#include "ZelvanoViewController.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QJsonObject answerWith(int videos)
{
    QJsonArray list;
    for (int i = 0; i < videos; ++i)
        list.append(
            QJsonObject{{u"videoId"_s, QString::number(i)}, {u"url"_s, u"http://videos.example/%1.mp4"_s.arg(i)}});
    return {{u"status"_s, 200}, {u"data"_s, QJsonObject{{u"videos"_s, list}}}};
}

QStringList idsOf(const ZVVideoList &videos)
{
    QStringList ids;
    for (const auto &video : videos)
        ids.append(video->videoId());
    return ids;
}

class Host : public ZelvanoViewControllerDelegate
{
public:
    void didSelectVideo(ZelvanoViewController *, const std::shared_ptr<ZVVideoParams> &video) override
    {
        selected.append(video->videoId());
        if (onSelect)
            onSelect();
    }
    void didSelectDone(ZelvanoViewController *) override
    {
        ++done;
        if (onDone)
            onDone();
    }

    QStringList selected;
    int done = 0;
    std::function<void()> onSelect;
    std::function<void()> onDone;
};

class NativeView : public ZVRecommendationView
{
public:
    QQuickItem *view() const override { return m_view.get(); }
    std::shared_ptr<ZVRecommendation> recommendations() const override { return m_recommendations; }
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations) override
    {
        m_recommendations = recommendations;
        lists.append(idsOf(recommendations->videoList()));
        if (onList)
            onList();
    }
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override { return m_delegate.lock(); }
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate) override { m_delegate = delegate; }

    QList<QStringList> lists;
    std::function<void()> onList;

private:
    const std::unique_ptr<QQuickItem> m_view = std::make_unique<QQuickItem>();
    std::shared_ptr<ZVRecommendation> m_recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> m_delegate;
};

/// Over a real item, and says when it is asked for its position: the engine does so inside each event's report.
class ScreenSubscriber : public FakeSubscriber
{
public:
    explicit ScreenSubscriber(QObject *view) : m_view(view) {}
    QObject *parentView() const override { return m_view; }
    double currentPosition() const override
    {
        if (onReport)
            onReport();
        return FakeSubscriber::currentPosition();
    }

    std::function<void()> onReport;

private:
    const QPointer<QObject> m_view;
};

/// A controller with a running engine, its host and its window.
struct Session
{
    EngineFixture service;
    HostWindow window;
    QQuickItem playerView;
    const std::shared_ptr<Host> host = std::make_shared<Host>();
    const std::shared_ptr<ScreenSubscriber> subscriber = std::make_shared<ScreenSubscriber>(&playerView);
    std::shared_ptr<ZelvanoViewController> controller = ZelvanoViewController::create(u"key"_s);

    Session()
    {
        playerView.setParentItem(window.contentItem());
        playerView.setSize({400, 300});
        Application::shared().setKeyWindow(&window);
        service.storeIdentity();
        controller->setDelegate(host);
        controller->zelvano()->playerEventsHandler()->setCurrentSubscriber(subscriber);
    }
    ~Session()
    {
        controller.reset();
        Application::shared().setKeyWindow(nullptr);
    }

    // The engine's calls: it holds its listener meanwhile.
    void recommend(int videos, const std::shared_ptr<QObject> &player = nullptr)
    {
        controller->shared_from_this()->suggestionsDidFetched(nullptr, player,
                                                              ZVRecommendation::create(answerWith(videos)));
    }
    /// What the page does when it has loaded.
    void beReady() { controller->webView()->shouldStartLoadWithRequest(QUrl(u"zelvano://ready"_s)); }
    void show(QSizeF videoSize = {320, 180})
    {
        controller->shared_from_this()->addRecommendationToView(nullptr, nullptr, &playerView, videoSize);
    }
    void playerIs(const QString &state) { controller->shared_from_this()->stateDidChanged(nullptr, nullptr, state); }
    void pick(const QString &position)
    {
        controller->webView()->shouldStartLoadWithRequest(QUrl("zelvano://index?"_L1 + position));
    }
    /// Events wait for a view, so the engine's queue tells what was reported.
    qsizetype reported(const QString &event) const
    {
        const auto stack = controller->zelvano()->stack();
        return std::count_if(stack.begin(), stack.end(), [&](const auto &entry) { return entry.event == event; });
    }
};

/// Hears of the notification to player plug-ins.
struct PlugIn
{
    struct Heard
    {
        QVariant object;
        QVariantMap userInfo;
        qsizetype videos() const
        {
            return QJsonDocument::fromJson(userInfo.value(u"zelvanoData"_s).toString().toUtf8()).array().size();
        }
    };
    QList<Heard> heard;
    std::function<void()> onPost;

    PlugIn()
    {
        NotificationCenter::defaultCenter().addObserver(this, u"SuggestionsDidFetchedNotification"_s,
                                                        [this](const Notification &notification) {
                                                            heard.append({notification.object, notification.userInfo});
                                                            if (onPost)
                                                                onPost();
                                                        });
    }
    ~PlugIn() { NotificationCenter::defaultCenter().removeObserver(this); }
};

/// How the host ends its controller: by name, or by letting go of it.
enum class End { Dismiss, Drop };

} // namespace

Q_DECLARE_METATYPE(End)

class tst_ViewController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Device::current().setOrientation(UIDeviceOrientation::Portrait); }

    void frameOverThePlayer_data();
    void frameOverThePlayer();
    void showingBeforeThePageIsReady();
    void impressionOncePerRecommendation();
    void states_data();
    void states();
    void doneDismisses();
    void selection();
    void selectionThatIsNoVideo_data();
    void selectionThatIsNoVideo();
    void nativeView_data();
    void nativeView();
    void plugIn_data();
    void plugIn();
    void rotationPosts();
    void addPlayerIsNoOperation();
    void keyWindow();
    void takenOffTheScreen();
    void endInsideACall_data();
    void endInsideACall();
    void tasksAfterDismissCreateNothing();
    void dropLeaksNothing();
};

void tst_ViewController::frameOverThePlayer_data()
{
    QTest::addColumn<QRectF>("player");
    QTest::addColumn<QSizeF>("video");
    QTest::addColumn<QRectF>("overlay");
    QTest::newRow("16:9 in 4:3") << QRectF(10, 100, 400, 300) << QSizeF(1600, 900) << QRectF(40, 160, 320, 180);
    QTest::newRow("x is left out") << QRectF(300, 100, 400, 300) << QSizeF(16, 9) << QRectF(40, 160, 320, 180);
    QTest::newRow("square") << QRectF(0, 0, 500, 500) << QSizeF(3, 3) << QRectF(50, 50, 400, 400);
    QTest::newRow("upright, taller than the player")
        << QRectF(0, 100, 200, 100) << QSizeF(9, 18) << QRectF(20, -10, 160, 320);
    QTest::newRow("empty player") << QRectF(5, 6, 0, 0) << QSizeF(16, 9) << QRectF(0, 6, 0, 0);
}

void tst_ViewController::frameOverThePlayer()
{
    QFETCH(const QRectF, player);
    QFETCH(const QSizeF, video);
    QFETCH(const QRectF, overlay);
    Session session;
    QQuickItem between(session.window.contentItem()); // The frame is the one in the superview.
    between.setPosition({1000, 1000});
    session.playerView.setParentItem(&between);
    session.playerView.setPosition(player.topLeft());
    session.playerView.setSize(player.size());
    session.beReady();
    session.show(video);
    QCOMPARE(session.controller->webView()->frame(), overlay);
    QVERIFY(!session.controller->webView()->isHidden());
    QCOMPARE(session.controller->webView()->parentItem(), session.window.contentItem());
}

void tst_ViewController::showingBeforeThePageIsReady()
{
    Session session;
    session.show();
    QCOMPARE(session.service.log.count(u"Error: webView is not ready"_s), 1);
    QVERIFY(session.controller->webView()->isHidden());
    QVERIFY(!session.controller->webView()->parentItem());
    QVERIFY(!session.controller->playerView());
    QCOMPARE(session.reported(u"impression"_s), 0);
}

void tst_ViewController::impressionOncePerRecommendation()
{
    Session session;
    session.beReady();
    session.show();
    QCOMPARE(session.reported(u"impression"_s), 0); // Nothing was recommended yet.
    for (int round = 1; round <= 3; ++round) {
        session.recommend(2);
        session.recommend(3);
        QVERIFY(session.controller->shouldSendImpression());
        session.playerIs(u"play"_s);
        session.show();
        QCOMPARE(session.reported(u"impression"_s), round);
        session.show();
        session.playerIs(u"play"_s);
        session.show();
        QCOMPARE(session.reported(u"impression"_s), round);
        QVERIFY(!session.controller->shouldSendImpression());
    }
}

void tst_ViewController::states_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("hides");
    for (const auto state : {PlayerEvent::Play, PlayerEvent::AutoPlay})
        QTest::newRow(state.data()) << QString(state) << true;
    for (const auto state : {PlayerEvent::Pause, PlayerEvent::Seek, PlayerEvent::Start, PlayerEvent::VideoStart,
                             PlayerEvent::Progress, PlayerEvent::End, PlayerEvent::RecommendationClick})
        QTest::newRow(state.data()) << QString(state) << false;
    QTest::newRow("unknown") << u"playing"_s << false;
    QTest::newRow("null") << QString() << false;
}

void tst_ViewController::states()
{
    QFETCH(const QString, state);
    QFETCH(const bool, hides);
    Session session;
    session.playerIs(state); // Without an overlay.
    session.beReady();
    session.show();
    session.playerIs(state);
    QCOMPARE(session.controller->webView()->isHidden(), hides);
    QVERIFY(session.controller->webView()->parentItem()); // It stays in the window.
    QCOMPARE(session.host->done, 0);
    session.playerIs(u"seek"_s);
    session.playerIs(u"pause"_s);
    session.show(); // No state keeps it from being shown again.
    QVERIFY(!session.controller->webView()->isHidden());
}

void tst_ViewController::doneDismisses()
{
    Session session;
    const PlugIn plugIn;
    const auto engine = session.controller->zelvano();
    session.controller->setSuggestionsSize(3);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method .*addPlayer"_s));
    session.controller->addPlayer(std::make_shared<QObject>());
    session.recommend(8);
    session.beReady();
    session.show();
    const QPointer<QQuickItem> overlay(session.controller->webView());
    session.host->onDone = [&] { QCOMPARE(session.controller->delegate(), session.host); };
    session.playerIs(u"done"_s);
    QCOMPARE(session.host->done, 1);
    QVERIFY(!session.controller->delegate());
    QVERIFY(!session.controller->player() && !session.controller->playerView());
    QVERIFY(!overlay || (!overlay->parentItem() && !overlay->isVisible()));
    QVERIFY(engine->listeners().empty());
    QCOMPARE(session.subscriber->dismissals, 1);

    session.controller->setDelegate(session.host);
    session.controller->dismiss();
    QCOMPARE(session.host->done, 2); // Only a delegate that is set anew hears of it again.
    Device::current().setOrientation(UIDeviceOrientation::LandscapeLeft);
    QVERIFY(plugIn.heard.isEmpty());
    QVERIFY(waitUntil([&] { return !overlay; }));
}

void tst_ViewController::selection()
{
    Session session;
    session.recommend(4);
    session.beReady();
    session.show();
    const auto engine = session.controller->zelvano();
    session.host->onSelect = [&] {
        QVERIFY(!engine->selectionByUser());
        QVERIFY(!session.controller->webView()->isHidden());
        QVERIFY(session.subscriber->nextVideos.isEmpty());
    };
    session.pick(u"2"_s);
    QCOMPARE(session.host->selected, QStringList{u"2"_s}); // Counted in the full list.
    QVERIFY(engine->selectionByUser());
    QVERIFY(session.controller->webView()->isHidden());
    QCOMPARE(session.subscriber->nextVideos, QStringList{u"http://videos.example/2.mp4"_s});

    session.host->onSelect = nullptr;
    session.controller->setDelegate({});
    session.pick(u"0"_s);
    QCOMPARE(session.subscriber->nextVideos.last(), u"http://videos.example/0.mp4"_s);
    QCOMPARE(session.host->selected.size(), 1);
}

void tst_ViewController::selectionThatIsNoVideo_data()
{
    QTest::addColumn<int>("videos");
    QTest::addColumn<QString>("position");
    QTest::newRow("negative") << 3 << u"-1"_s;
    QTest::newRow("one past the end") << 3 << u"3"_s;
    QTest::newRow("far past the end") << 3 << u"99999999999"_s;
    QTest::newRow("of an empty list") << 0 << u"0"_s;
    QTest::newRow("before any list") << -1 << u"0"_s;
}

void tst_ViewController::selectionThatIsNoVideo()
{
    QFETCH(const int, videos);
    QFETCH(const QString, position);
    Session session;
    if (videos >= 0)
        session.recommend(videos);
    session.beReady();
    session.show();
    const auto before = session.service.log.beginningWith(u"Error: the layout page"_s).size();
    session.pick(position);
    QVERIFY(session.host->selected.isEmpty());
    QVERIFY(session.subscriber->nextVideos.isEmpty());
    QVERIFY(!session.controller->zelvano()->selectionByUser());
    QVERIFY(!session.controller->webView()->isHidden());
    QCOMPARE(session.service.log.beginningWith(u"Error: the layout page"_s).size(), before + 1);
}

void tst_ViewController::nativeView_data()
{
    QTest::addColumn<int>("videos");
    QTest::addColumn<QStringList>("list");
    QTest::newRow("three") << 3 << QStringList{u"1"_s, u"2"_s};
    QTest::newRow("two") << 2 << QStringList{u"1"_s};
    QTest::newRow("one, which there is no list without") << 1 << QStringList{u"0"_s};
    QTest::newRow("none") << 0 << QStringList();
}

void tst_ViewController::nativeView()
{
    QFETCH(const int, videos);
    QFETCH(const QStringList, list);
    Session session;
    const auto view = std::make_shared<NativeView>();
    session.recommend(5); // Nobody to give it to.
    QVERIFY(flushMainQueue());
    session.controller->setRecommendationView(view);
    session.recommend(videos);
    QVERIFY(view->lists.isEmpty());
    QVERIFY(flushMainQueue());
    QCOMPARE(view->lists, QList<QStringList>{list});
    QCOMPARE(session.controller->videoList().size(), static_cast<std::size_t>(videos));
    if (list.isEmpty())
        return;
    session.controller->didSelecteRecommendation(view->recommendations()->videoList().front());
    QCOMPARE(session.host->selected, list.first(1));
    QVERIFY(!session.controller->zelvano()->selectionByUser()); // The host's own view: its own business.
    QVERIFY(session.subscriber->nextVideos.isEmpty());
}

void tst_ViewController::plugIn_data()
{
    QTest::addColumn<UIDeviceOrientation>("orientation");
    QTest::addColumn<int>("videos");
    QTest::addColumn<QString>("player");
    QTest::addColumn<int>("posted"); // Videos in the text; 0 when nothing is posted.
    const auto same = u"same"_s;
    QTest::newRow("portrait, 1") << UIDeviceOrientation::Portrait << 1 << same << 0;
    QTest::newRow("portrait, 2") << UIDeviceOrientation::Portrait << 2 << same << 1;
    QTest::newRow("upside down, 2") << UIDeviceOrientation::PortraitUpsideDown << 2 << same << 1;
    QTest::newRow("landscape, 6") << UIDeviceOrientation::LandscapeLeft << 6 << same << 0;
    QTest::newRow("landscape, 7") << UIDeviceOrientation::LandscapeRight << 7 << same << 6;
    QTest::newRow("landscape, 5") << UIDeviceOrientation::LandscapeRight << 5 << same << 0;
    QTest::newRow("face up, 7") << UIDeviceOrientation::FaceUp << 7 << same << 6;
    QTest::newRow("unknown, 2") << UIDeviceOrientation::Unknown << 2 << same << 0;
    QTest::newRow("other player") << UIDeviceOrientation::Portrait << 2 << u"other"_s << 0;
    QTest::newRow("told of no player") << UIDeviceOrientation::Portrait << 2 << u"told none"_s << 0;
    QTest::newRow("has no player") << UIDeviceOrientation::Portrait << 2 << u"has none"_s << 0;
    QTest::newRow("no player at all") << UIDeviceOrientation::Portrait << 2 << u"none"_s << 0;
}

void tst_ViewController::plugIn()
{
    QFETCH(const UIDeviceOrientation, orientation);
    QFETCH(const int, videos);
    QFETCH(const QString, player);
    QFETCH(const int, posted);
    Session session;
    Device::current().setOrientation(orientation);
    const PlugIn plugIn;
    const auto own = std::make_shared<QObject>();
    if (player != "has none"_L1 && player != "none"_L1) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method .*addPlayer"_s));
        session.controller->addPlayer(own);
    }
    session.recommend(videos, player == "other"_L1                                    ? std::make_shared<QObject>()
                              : player.endsWith("none"_L1) && player != "has none"_L1 ? nullptr
                                                                                      : own);
    QCOMPARE(plugIn.heard.size(), posted > 0 ? 1 : 0);
    if (posted == 0)
        return;
    QCOMPARE(plugIn.heard[0].object.value<QObject *>(), own.get());
    QCOMPARE(plugIn.heard[0].userInfo.keys(), QStringList{u"zelvanoData"_s});
    QCOMPARE(plugIn.heard[0].videos(), posted);
}

void tst_ViewController::rotationPosts()
{
    Session session;
    const PlugIn plugIn;
    Device::current().setOrientation(UIDeviceOrientation::LandscapeLeft);
    QVERIFY(plugIn.heard.isEmpty()); // Nothing to tell yet.
    session.recommend(6);
    Device::current().setOrientation(UIDeviceOrientation::LandscapeRight);
    QVERIFY(plugIn.heard.isEmpty()); // Too few for this way of holding it.
    Device::current().setOrientation(UIDeviceOrientation::Portrait);
    QCOMPARE(plugIn.heard.size(), 1);
    QVERIFY(!plugIn.heard[0].object.isValid());
    QCOMPARE(plugIn.heard[0].videos(), 1);
    session.recommend(8);
    const auto player = std::make_shared<QObject>();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method .*addPlayer"_s));
    session.controller->addPlayer(player);
    Device::current().setOrientation(UIDeviceOrientation::FaceDown);
    QCOMPARE(plugIn.heard.size(), 2);
    QCOMPARE(plugIn.heard[1].object.value<QObject *>(), player.get());
    QCOMPARE(plugIn.heard[1].videos(), 6);
}

void tst_ViewController::addPlayerIsNoOperation()
{
    Session session;
    session.service.settle();
    const auto before = session.service.sent();
    const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method zelvano::Zelvano::addPlayer"_s));
    session.controller->addPlayer(player);
    QCOMPARE(session.controller->player(), player);
    QCOMPARE(session.controller->zelvano()->playerEventsHandler()->currentSubscriber(), session.subscriber);
    session.service.settle();
    QCOMPARE(session.service.sent(), before);
    session.controller->setPlayer(player, u"page"_s);
    QCOMPARE(session.controller->zelvano()->playerEventsHandler()->currentSubscriber()->playerId(), u"avplayer"_s);
}

void tst_ViewController::keyWindow()
{
    Session session;
    session.beReady();
    const auto content = [&] { return session.controller->webView()->parentItem(); };
    {
        QQuickWindow second;
        Application::shared().setKeyWindow(&second);
        session.show();
        QCOMPARE(content(), second.contentItem());
        Application::shared().setKeyWindow(&session.window);
        session.show();
        QCOMPARE(content(), session.window.contentItem());
        Application::shared().setKeyWindow(&second);
        session.show();
    }
    QVERIFY(!content()); // Its window has gone, and the overlay lives on.
    session.show();
    QVERIFY(QGuiApplication::topLevelWindows().contains(&session.window));
    QCOMPARE(content(), session.window.contentItem()); // No key window: the first.
    QVERIFY(session.window.appear());
    QWindow noQuickWindow;
    Application::shared().setKeyWindow(&noQuickWindow);
    session.show();
    QCOMPARE(content(), session.window.contentItem());
    QVERIFY(content()->childItems().last() == session.controller->webView() ||
            session.controller->webView()->z() > 1000);
}

void tst_ViewController::takenOffTheScreen()
{
    Session session;
    const PlugIn plugIn;
    const auto view = std::make_shared<NativeView>();
    view->setDelegate(session.controller);
    view->view()->setParentItem(session.window.contentItem());
    session.controller->setRecommendationView(view);
    session.beReady();
    session.recommend(8);
    session.show();
    const auto *const overlay = session.controller->webView();
    session.controller->removeZelvanoRecommendations();
    QCOMPARE(session.controller->webView(), overlay);
    QVERIFY(!overlay->parentItem() && !overlay->isHidden());
    QVERIFY(!view->view()->parentItem() && !view->delegate());
    QCOMPARE(session.controller->recommendationView(), view);
    QCOMPARE(session.controller->zelvano()->listeners().size(), 1U);
    Device::current().setOrientation(UIDeviceOrientation::LandscapeLeft);
    QVERIFY(plugIn.heard.isEmpty());
    ZelvanoViewController::create(u"key"_s)->removeZelvanoRecommendations(); // With nothing to work on.
}

void tst_ViewController::endInsideACall_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<End>("end");
    for (const auto *call : {"selection", "selection by the page", "selection without event loop", "done",
                             "native list", "plug-in", "rotation"}) {
        QTest::addRow("%s, dismiss", call) << QString::fromLatin1(call) << End::Dismiss;
        QTest::addRow("%s, drop", call) << QString::fromLatin1(call) << End::Drop;
    }
}

void tst_ViewController::endInsideACall()
{
    QFETCH(const QString, call);
    QFETCH(const End, end);
    Session session;
    PlugIn plugIn;
    const auto view = std::make_shared<NativeView>();
    const auto player = std::make_shared<QObject>();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"No such method .*addPlayer"_s));
    session.controller->addPlayer(player);
    session.controller->setRecommendationView(view);
    session.recommend(3);
    QVERIFY(flushMainQueue());
    session.controller->webView()->setUrl(listeningPage());
    QVERIFY(waitUntil([&] { return session.controller->webView()->isReady(); }));

    const QPointer<QObject> controller(session.controller.get());
    const QPointer<QObject> overlay(session.controller->webView());
    const std::weak_ptr<Zelvano> engine(session.controller->zelvano());
    int calls = 0;
    const auto endIt = [&] {
        if (++calls > 3)
            return; // Would go on for ever.
        if (end == End::Drop)
            session.controller.reset();
        else
            session.controller->dismiss();
    };
    if (call == "selection"_L1) {
        session.host->onSelect = endIt;
        session.pick(u"1"_s);
    } else if (call.startsWith("selection"_L1)) {
        session.host->onSelect = endIt;
        evaluate(*session.controller->webView(), u"setTimeout(() => { location.href = 'zelvano://index?1' }, 20)"_s);
        const bool inEventLoop = call == "selection by the page"_L1;
        const QDeadlineTimer deadline(10000);
        while (!inEventLoop && overlay && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QVERIFY(waitUntil([&] { return calls > 0; }));
    } else if (call == "done"_L1) {
        session.host->onDone = endIt;
        session.playerIs(u"done"_s);
    } else if (call == "native list"_L1) {
        view->onList = endIt;
        session.recommend(3);
    } else if (call == "plug-in"_L1) {
        plugIn.onPost = endIt;
        session.recommend(3, player);
    } else {
        plugIn.onPost = endIt;
        Device::current().setOrientation(UIDeviceOrientation::PortraitUpsideDown);
    }
    session.host->onSelect = session.host->onDone = nullptr;
    QVERIFY(flushMainQueue());
    QCOMPARE(calls, 1);
    QVERIFY(waitUntil([&] { return !overlay; }));
    QCOMPARE(session.host->done, end == End::Dismiss || call == "done"_L1 ? 1 : 0);
    QVERIFY(session.subscriber->nextVideos.isEmpty());
    session.controller.reset();
    session.service.settle();
    QVERIFY(waitUntil([&] { return !controller; }));
    QVERIFY(engine.expired());
}

void tst_ViewController::tasksAfterDismissCreateNothing()
{
    Session session;
    session.service.settle();
    const auto before = session.service.sent();
    session.controller->dismiss();
    session.recommend(4);
    session.show();
    session.playerIs(u"play"_s);
    session.playerIs(u"done"_s);
    session.controller->recommendationViewDidLoad();
    QVERIFY(flushMainQueue());
    session.service.settle();
    QCOMPARE(session.service.sent(), before);
    QCOMPARE(session.service.log.count(u"Error: webView is not ready"_s), 1);
    QCOMPARE(session.host->done, 1);
    QVERIFY(session.controller->webView()->jsonSuggestions().isNull()); // Made only now.
}

/// One after another, each with its page loading, none dismissed.
void tst_ViewController::dropLeaksNothing()
{
    EngineFixture service;
    service.storeIdentity();
    HostWindow window;
    QVERIFY(window.appear());
    for (int i = 0; i < 20; ++i) {
        auto controller = ZelvanoViewController::create(u"key"_s);
        const std::weak_ptr<ZelvanoViewController> watched(controller->weak_from_this());
        const std::weak_ptr<Zelvano> engine(controller->zelvano());
        const QPointer<QObject> overlay(controller->webView());
        service.settle();
        controller->suggestionsDidFetched(nullptr, nullptr, ZVRecommendation::create(answerWith(3)));
        controller->webView()->shouldStartLoadWithRequest(QUrl(u"zelvano://ready"_s));
        controller->addRecommendationToView(nullptr, nullptr, &window.below, {16, 9});
        controller.reset();
        service.settle();
        QVERIFY(waitUntil([&] { return watched.expired() && engine.expired() && !overlay; }));
    }
    QCOMPARE(service.log.count(u"dealloc"_s), 20);
    QCOMPARE(window.contentItem()->childItems(), QList<QQuickItem *>{&window.below});
}

int main(int argc, char **argv)
{
    return runUiTest<tst_ViewController>(argc, argv);
}
#include "tst_ViewController.moc"
