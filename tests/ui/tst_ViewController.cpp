#include "ControllerSession.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/ZVListView.h>

#include <QLibraryInfo>
#include <QVersionNumber>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

struct Session : ControllerSession
{
    /// Events wait for a view, so the engine's queue tells what was reported.
    qsizetype reported(const QString &event) const
    {
        const auto stack = engine()->state().stack;
        return std::count_if(stack.begin(), stack.end(), [&](const auto &entry) { return entry.event == event; });
    }
    bool isShown() const { return !overlay()->isHidden(); }
};

struct ShownSession : Session
{
    ShownSession()
    {
        recommend(8);
        beReady();
        show();
    }
};

/// Records the notifications to player plug-ins: the player, and the number of videos.
struct PlugIn
{
    using Heard = QList<std::pair<QObject *, qsizetype>>;

    PlugIn()
    {
        NotificationCenter::defaultCenter().addObserver(this, SuggestionsDidFetchedNotification, [this](auto &posted) {
            const auto videos = QJsonDocument::fromJson(posted.userInfo.value(ZelvanoDataKey).toByteArray()).array();
            heard.append({posted.object.template value<QObject *>(), videos.size()});
        });
    }
    ~PlugIn() { NotificationCenter::defaultCenter().removeObserver(this); }
    Heard since() { return std::exchange(heard, {}); }

    Heard heard;
};

void turn(UIDeviceOrientation orientation)
{
    Device::current().setOrientation(orientation);
}

} // namespace

class tst_ViewController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { turn(UIDeviceOrientation::Portrait); }
    void frameOverThePlayer()
    {
        Session session;
        session.beReady();
        QQuickItem between(session.window->contentItem()); // The frame is the one in the superview.
        between.setPosition({1000, 1000});
        session.playerView.setParentItem(&between);
        const std::vector<std::tuple<QRectF, QSizeF, QRectF>> cases{
            {{10, 100, 400, 300}, {1600, 900}, {40, 160, 320, 180}},
            {{300, 100, 400, 300}, {16, 9}, {40, 160, 320, 180}}, // x is left out.
            {{0, 100, 200, 100}, {9, 18}, {20, -10, 160, 320}},   // Upright, taller than the player.
            {{5, 6, 0, 0}, {16, 9}, {0, 6, 0, 0}},
        };
        for (const auto &[player, video, frame] : cases) {
            session.playerView.setPosition(player.topLeft());
            session.playerView.setSize(player.size());
            session.show(video);
            QCOMPARE(session.overlay()->frame(), frame);
        }
        QVERIFY(session.isShown());
        QCOMPARE(session.overlay()->parentItem(), session.window->contentItem());

        session.playerView.setSize({400, 300});
        session.show({16, 9});
        session.playerView.setSize({200, 100}); // A window that was turned or resized is laid out later.
        QTRY_COMPARE(session.overlay()->frame().size(), QSizeF(160, 90));
        session.overlay()->setHidden(true);
        session.playerView.setSize({400, 300});
        QVERIFY(flushMainQueue());
        QCOMPARE(session.overlay()->frame().size(), QSizeF(160, 90));
        turn(UIDeviceOrientation::LandscapeLeft);
        QCOMPARE(session.overlay()->frame().size(), QSizeF(320, 180));
    }

    /// The impression is sent once for a recommendation. Then the overlay appears, and only then it gets its place and
    /// window.
    void impressions()
    {
        Session session;
        session.beReady();
        const QRectF before = session.overlay()->frame();
        int appearances = 0;
        connect(session.overlay(), &QQuickItem::visibleChanged, session.overlay(), [&] {
            // From Qt 6.8 on an item is invisible until it has a parent, so there it appears in its place.
            if (++appearances == 1 && QLibraryInfo::version() < QVersionNumber(6, 8))
                QVERIFY(session.overlay()->frame() == before && !session.overlay()->window());
            else if (appearances == 3) // The second showing.
                QCOMPARE(session.reported(u"impression"_s), 1);
        });
        session.show();
        QCOMPARE(session.reported(u"impression"_s), 0); // Nothing was recommended yet.
        session.playerIs(u"play"_s);
        QCOMPARE(appearances, 2);
        for (int round = 1; round <= 3; ++round) {
            session.recommend(2);
            session.recommend(3);
            QVERIFY(session.controller->shouldSendImpression());
            for (int showing = 0; showing < 2; ++showing) {
                session.playerIs(u"play"_s);
                session.show();
                session.show();
                QCOMPARE(session.reported(u"impression"_s), round);
            }
        }
    }

    void states()
    {
        Session session;
        session.playerIs(u"play"_s); // Without an overlay.
        session.beReady();
        for (const auto &state : {u"pause"_s, u"seek"_s, u"start"_s, u"videoStart"_s, u"progress"_s, u"end"_s,
                                  u"recommendationClick"_s, u"playing"_s, QString(), u"play"_s, u"autoPlay"_s}) {
            session.show();
            session.playerIs(state);
            const bool hides = state == u"play"_s || state == u"autoPlay"_s;
            QVERIFY2(session.isShown() != hides && session.overlay()->parentItem(), qPrintable(state));
            session.overlay()->setHidden(true);
            session.playerIs(u"pause"_s);
            session.show(); // No state, not even a seek, prevents the next showing.
            QVERIFY2(session.isShown(), qPrintable(state));
        }
        QCOMPARE(session.host->done, 0);
    }

    void doneDismisses()
    {
        ShownSession session;
        const PlugIn plugIn;
        const auto engine = session.engine();
        session.addPlayer(std::make_shared<QObject>());
        const QPointer<QQuickItem> overlay(session.overlay());
        session.host->onDone = [&] {
            QCOMPARE(session.controller->delegate(), session.host);
            QVERIFY(!session.controller->player() && !session.controller->playerView() && engine->listeners().empty());
            turn(UIDeviceOrientation::PortraitUpsideDown);
        };
        const QObject whileItLasts;
        int hidings = 0;
        connect(overlay, &QQuickItem::visibleChanged, &whileItLasts, [&] {
            ++hidings;
            QVERIFY(session.controller->player() && session.controller->playerView());
            QCOMPARE(session.subscriber->dismissals, 0);
        });
        session.playerIs(u"done"_s);
        QVERIFY(!session.controller->delegate() && session.host->done == 1);
        QVERIFY(hidings == 1 && session.subscriber->dismissals == 1);

        session.controller->setDelegate(session.host);
        session.controller->dismiss();
        QCOMPARE(session.host->done, 2); // Only a delegate that is set anew hears of it again.
        turn(UIDeviceOrientation::LandscapeLeft);
        QVERIFY(plugIn.heard.isEmpty());
        QVERIFY(waitUntil([&] { return !overlay; }));
    }

    /// The engine may have promised these before.
    void callsAfterDismissCreateNothing()
    {
        Session session;
        session.show(); // The page is not ready.
        QVERIFY(!session.overlay()->parentItem() && !session.controller->playerView());
        session.service.settle();
        const auto before = session.service.sent();
        session.controller->dismiss();
        session.playerIs(u"play"_s);
        session.playerIs(u"done"_s);
        session.recommend(4);
        session.show();
        session.controller->recommendationViewDidLoad();
        QVERIFY(flushMainQueue());
        session.service.settle();
        QCOMPARE(session.service.sent(), before);
        QCOMPARE(session.service.log.count(u"Error: webView is not ready"_s), 2);
        QCOMPARE(session.host->done, 1);
        QVERIFY(session.overlay()->jsonSuggestions().isNull()); // Made only now.
    }

    void selection()
    {
        ShownSession session;
        session.host->onSelect = [&] {
            QVERIFY(!session.engine()->selectionByUser() && session.isShown());
            QVERIFY(session.subscriber->nextVideos.isEmpty());
        };
        const QObject whileItLasts;
        connect(session.overlay(), &QQuickItem::visibleChanged, &whileItLasts,
                [&] { QVERIFY(session.engine()->selectionByUser() && session.subscriber->nextVideos.isEmpty()); });
        session.pick(2);
        QCOMPARE(session.host->selected, QStringList{u"video-2"_s}); // Counted in the full list.
        QVERIFY(session.engine()->selectionByUser() && !session.isShown());
        QCOMPARE(session.subscriber->nextVideos, QStringList{u"http://videos.example/2.mp4"_s});

        auto videos = videosJson(2);
        videos.prepend(u"no video"_s); // The page gets none of it, so that it counts as the host does.
        session.controller->shared_from_this()->suggestionsDidFetched(nullptr, nullptr, recommendationOf(videos));
        const auto shown = QJsonDocument::fromJson(session.overlay()->jsonSuggestions().toUtf8()).array();
        QCOMPARE(shown, videosJson(2));

        session.controller->setDelegate({});
        session.pick(0);
        QCOMPARE(session.subscriber->nextVideos.last(), u"http://videos.example/0.mp4"_s);
        QCOMPARE(session.host->selected.size(), 1);
    }

    /// What the viewer picked in one session does not play in the next.
    void selectionThatRestarts()
    {
        ShownSession session;
        const auto next = std::make_shared<FakeSubscriber>();
        session.host->onSelect = [&] {
            session.controller->dismiss();
            session.engine()->playerEventsHandler()->setCurrentSubscriber(next);
        };
        session.pick(1);
        QVERIFY(!session.engine()->selectionByUser());
        QVERIFY(session.subscriber->nextVideos.isEmpty() && next->nextVideos.isEmpty());
    }

    void selectionThatIsNoVideo()
    {
        Session session;
        session.beReady();
        session.show();
        session.pick(0); // Before any list.
        for (const int videos : {0, 3}) {
            session.recommend(videos);
            for (const int position : {-1, videos, 2147483647})
                session.pick(position);
        }
        QCOMPARE(session.service.log.beginningWith(u"Error: the layout page picked"_s).size(), 7);
        QVERIFY(session.host->selected.isEmpty() && session.subscriber->nextVideos.isEmpty());
        QVERIFY(!session.engine()->selectionByUser() && session.isShown());
    }

    void nativeView()
    {
        Session session;
        const auto list = ZVListView::create();
        const auto added = ZVListView::create();
        session.controller->setRecommendationView(list);
        session.controller->addRecommendationView(added);
        const auto ids = [](const ZVListView &view) {
            QString text;
            for (const auto &video : view.recommendations()->videoList())
                text += video->videoId() + u' ';
            return text;
        };
        // Without the overlay's first; what the rest would be of one video is its whole list.
        for (const auto &[count, expected] :
             {std::pair(3, "video-1 video-2 "), {2, "video-1 "}, {1, "video-0 "}, {0, ""}}) {
            const auto before = list->recommendations();
            session.recommend(count);
            QCOMPARE(list->recommendations(), before);
            QVERIFY(flushMainQueue());
            QCOMPARE(ids(*list), QLatin1StringView(expected));
            QCOMPARE(ids(*added), ids(*list));
            QVERIFY(added->recommendations() != list->recommendations()); // The views store sizes in the records.
        }
        const auto late = ZVListView::create();
        session.controller->addRecommendationView(late);
        QCOMPARE(ids(*late), ids(*list));
        session.controller->removeRecommendationView(added);
        const auto last = added->recommendations();
        session.recommend(3);
        QVERIFY(flushMainQueue());
        QCOMPARE(added->recommendations(), last);
        QCOMPARE(ids(*late), u"video-1 video-2 "_s);
        session.controller->didSelecteRecommendation(std::make_shared<ZVVideoParams>(videoJson(1)));
        QCOMPARE(session.host->selected, QStringList{u"video-1"_s});
        QVERIFY(!session.engine()->selectionByUser()); // The host's own view: its own business.
        QVERIFY(session.subscriber->nextVideos.isEmpty());
    }

    void plugIn()
    {
        Session session;
        PlugIn plugIn;
        const auto player = std::make_shared<QObject>();
        session.recommend(2, player); // The controller has none, or not this one.
        session.recommend(2);
        turn(UIDeviceOrientation::PortraitUpsideDown); // A turn posts without a player, too.
        QVERIFY(plugIn.since() == PlugIn::Heard({{nullptr, 1}}));
        session.addPlayer(player);
        session.recommend(2, std::make_shared<QObject>());
        session.recommend(2);
        const std::tuple<UIDeviceOrientation, int, int> cases[] = {
            {UIDeviceOrientation::Portrait, 1, 0},           {UIDeviceOrientation::Portrait, 2, 1},
            {UIDeviceOrientation::LandscapeLeft, 6, 0},      {UIDeviceOrientation::FaceUp, 7, 6},
            {UIDeviceOrientation::PortraitUpsideDown, 2, 1}, {UIDeviceOrientation::Unknown, 2, 0},
        };
        for (const auto &[orientation, videos, posted] : cases) { // Videos in the text; with 0 nothing is posted.
            QVERIFY(plugIn.since().isEmpty());
            turn(orientation);
            plugIn.since();
            session.recommend(videos, player);
            QVERIFY(plugIn.since() == (posted > 0 ? PlugIn::Heard({{player.get(), posted}}) : PlugIn::Heard()));
        }
        turn(UIDeviceOrientation::FaceDown);
        QVERIFY(plugIn.since().isEmpty()); // Too few videos for this orientation.
        session.recommend(7);
        turn(UIDeviceOrientation::FaceUp);
        QVERIFY(plugIn.since() == PlugIn::Heard({{player.get(), 6}}));
    }

    void whatTheEngineGets()
    {
        Session session;
        QCOMPARE(session.engine()->state().recommenationsSize, 7);
        const auto player = std::make_shared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        session.addPlayer(player);
        QCOMPARE(session.controller->player(), player);
        QCOMPARE(session.engine()->playerEventsHandler()->currentSubscriber(), session.subscriber); // No player.
        session.controller->setPlayer(player, u"page"_s);
        QCOMPARE(session.engine()->playerEventsHandler()->currentSubscriber()->playerId(), u"avplayer"_s);
        QVERIFY(session.controller->disableSuggestionsBottomView() && session.controller->type() == 0);
        QVERIFY(session.controller->getMediaSrcWithDomain(u"a b.mp4"_s).endsWith("/a b.mp4"_L1));
    }

    /// In the player's window, else the named one, else the first visible one, and never in a hidden one.
    void windowOfTheOverlay()
    {
        Session session;
        session.overlay()->setUrl(listeningPage(
            u"<script>var drawn = 0; (function draw() { ++drawn; requestAnimationFrame(draw); })()</script>"_s));
        session.recommend(2);
        const auto *const page = session.overlay()->webView();
        // A page's first frame takes long. A hidden page draws it after loading, and rests then.
        QVERIFY(waitUntil([&] { return page->window() == session.window.get(); }));
        QVERIFY(waitForPage(*session.overlay(), u"drawn > 2"_s) && session.overlay()->isHidden());
        QVERIFY(waitUntil([&] { return !page->window(); }));
        session.beReady();
        const auto windowOfShown = [&] {
            session.show();
            return session.overlay()->window();
        };
        {
            HostWindow second;
            second.show();
            Application::shared().setKeyWindow(&second);
            QCOMPARE(windowOfShown(), session.window.get());
            session.window->hide();
            QCOMPARE(windowOfShown(), &second);
            session.playerView.setParentItem(nullptr);
            session.window->show();
            QCOMPARE(windowOfShown(), &second);
            QTest::keyClick(session.window.get(), Qt::Key_Escape);
            QVERIFY(session.isShown());
            second.hide();
            QCOMPARE(windowOfShown(), session.window.get());
            second.show();
            QCOMPARE(windowOfShown(), &second);
        }
        QVERIFY(!session.overlay()->parentItem()); // Its window has gone, and the overlay lives on.
        QCOMPARE(windowOfShown(), session.window.get());
        QVERIFY(session.overlay()->z() > 1000);
        session.window->hide();
        QCOMPARE(windowOfShown(), nullptr);
        QCOMPARE(session.service.log.count(u"Error: no window is visible, so the overlay is not"_s), 1);
    }

    void takenOffTheScreen()
    {
        ShownSession session;
        const PlugIn plugIn;
        const std::array lists{ZVListView::create(), ZVListView::create()};
        for (const auto &list : lists) {
            list->setDelegate(session.controller);
            list->view()->setParentItem(session.window->contentItem());
        }
        session.controller->setRecommendationView(lists[0]);
        session.controller->addRecommendationView(lists[1]);
        session.service.settle();
        const auto calls = session.service.sent();
        const auto *const overlay = session.overlay();
        session.controller->removeZelvanoRecommendations();
        QVERIFY(session.overlay() == overlay && !overlay->parentItem() && !overlay->isHidden());
        for (const auto &list : lists)
            QVERIFY(!list->view()->parentItem() && !list->delegate());
        QCOMPARE(session.controller->recommendationView(), lists[0]);
        QCOMPARE(session.engine()->listeners().size(), 1U);
        turn(UIDeviceOrientation::PortraitUpsideDown);
        session.service.advance(1h);
        QCOMPARE(session.service.sent(), calls);
        QVERIFY(plugIn.heard.isEmpty());
        ZelvanoViewController::create(u"key"_s)->removeZelvanoRecommendations(); // With nothing to work on.
    }
};

UI_TEST_MAIN(tst_ViewController)
#include "tst_ViewController.moc"
