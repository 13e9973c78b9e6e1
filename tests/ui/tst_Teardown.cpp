#include "ControllerSession.h"
#include "Process.h"
#include <ZelvanoUI/Device.h>
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/ZVCategoryView.h>
#include <ZelvanoUI/ZVListView.h>

#include <QMediaPlayer>
#include <QProcess>

#include <string_view>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace std::string_view_literals;
using namespace zelvano;
using sandbox::Fault;

namespace {

const QStringList parts{u"player"_s, u"engine"_s, u"controller"_s, u"views"_s, u"window"_s};

/// A native view of the host's own.
class OwnView : public ZVRecommendationView
{
public:
    explicit OwnView(std::function<void()> onList) : m_onList(std::move(onList)) {}

    QQuickItem *view() const override { return nullptr; }
    std::shared_ptr<ZVRecommendation> recommendations() const override { return nullptr; }
    void setRecommendations(const std::shared_ptr<ZVRecommendation> &) override { m_onList(); }
    std::shared_ptr<ZVRecommendationViewDelegate> delegate() const override { return nullptr; }
    void setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &) override {}

private:
    const std::function<void()> m_onList;
};

/// All that a host may have of the library at once; a call, the page and the pictures are under way, and so is a swipe.
struct Scene : ControllerSession
{
    explicit Scene(Fault::Kind network, const QUrl &page = {})
    {
        Fault fault;
        fault.kind = network;
        fault.delay = 20ms;
        fault.times = -1;
        service.fault(ZVPageEvent, fault);
        for (const auto &path : {u"/layout/"_s, u"/pictures/1"_s})
            service.sandbox.addFault(path, {}, fault);

        controller->setRecommendationView(views.front());
        controller->setPlayer(QtAVPlayerViewController::create(player.get(), &playerView), u"page"_s);
        const auto picture = service.sandbox.url(u"/pictures/1"_s);
        for (const auto &view : views) {
            view->setDelegate(controller);
            view->view()->setParentItem(window->contentItem());
            view->view()->setPosition({view == views.front() ? 0.0 : 400.0, 250}); // Not under the overlay.
            view->view()->setSize({300, 350});
            // One picture each: those without an answer keep their connections.
            view->setRecommendations(recommendationOf({videoJson(0, {}, u"A"_s), videoJson(1, picture, u"B"_s)}));
        }
        overlay()->setUrl(page.isEmpty() ? service.sandbox.url(u"/layout/"_s) : page);
        recommend(3);
        if (page.isEmpty())
            beReady();
        const bool isUnderWay = window->appear() && waitUntil([&] {
                                    return service.arrived(ZVPageEvent).number > 0 && overlay()->isReady() &&
                                           service.sandbox.hits(u"/pictures/1"_s) > 0 &&
                                           (service.sandbox.hits(u"/layout/"_s) > 0) == page.isEmpty();
                                });
        Q_ASSERT(isUnderWay);
        show();
        overlay()->didSwipe(1);
        ownEngine = engine();
    }

    void end(const QString &part)
    {
        const std::map<QString, std::function<void()>> ends{
            {u"player"_s, [this] { player.reset(); }},
            {u"engine"_s, [this] { ownEngine ? std::exchange(ownEngine, nullptr)->dismissZelvano() : void(); }},
            {u"controller"_s, [this] { controller.reset(); }},
            {u"views"_s, [this] { views.clear(); }},
            {u"window"_s, [this] { window.reset(); }},
        };
        ends.at(part)();
    }
    void endAll()
    {
        for (const auto &part : parts)
            end(part);
        ZVAPIObject::stopAllSessions(); // A call without an answer would hold its engine until it times out.
        service.settle();
    }
    /// A predicate: nothing of it is left.
    std::function<bool()> watch() const
    {
        const QList<QPointer<QObject>> objects{controller.get(), ownEngine.get(), overlay(), views[0]->view(),
                                               views[1]->view()};
        return [objects] { return std::all_of(objects.begin(), objects.end(), [](auto &left) { return !left; }); };
    }

    std::unique_ptr<QMediaPlayer> player = std::make_unique<QMediaPlayer>();
    std::vector<std::shared_ptr<ZVRecommendationView>> views{ZVListView::create(), ZVCategoryView::create()};
    std::shared_ptr<Zelvano> ownEngine;
};

/// A host that quits with all that under way, and keeps its engine for longer than there is an application object.
int runQuittingHost(int argc, char **argv)
{
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);
    static auto *const scene = new Scene(Fault::Kind::Silence); // The service is there until the process ends.
    static const auto engine = std::exchange(scene->ownEngine, nullptr);
    QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    const int result = QGuiApplication::exec();
    for (const auto &part : {u"controller"_s, u"views"_s, u"window"_s, u"player"_s})
        scene->end(part);
    return result;
}

} // namespace

/// What hangs together ends in any order, and at the worst moments.
class tst_Teardown : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyOrder()
    {
        auto order = parts;
        for (const auto &first : parts) {
            for (const auto network : {Fault::Kind::Delay, Fault::Kind::Silence}) {
                const Case current(first.toLatin1() +
                                   (network == Fault::Kind::Delay ? ", late answers" : ", no answers"));
                Scene scene(network);
                const auto hasEnded = scene.watch();
                for (const auto &part : order) {
                    scene.end(part);
                    if (network == Fault::Kind::Silence)
                        QCoreApplication::processEvents();
                    else
                        scene.service.settle(); // What is answered finds what is left.
                }
                scene.endAll();
                QVERIFY(waitUntil(hasEnded));
                QCOMPARE(scene.service.log.count(u"dealloc"_s), 1);
            }
            std::rotate(order.begin(), order.begin() + 1, order.end());
        }
    }

    void insideACall_data()
    {
        addColumns<QString, bool>({"call", "drops"}); // Or dismisses.
        for (const auto *call :
             {"selection", "selection by the page", "selection by the page, without event loop",
              "selection in the list", "selection in the categories", "done", "focus", "native list", "plug-in",
              "rotation", "frame at a rotation", "frame at a layout", "showing", "removal", "Escape"}) {
            for (const bool drops : {false, true})
                QTest::addRow("%s, %s", call, drops ? "drop" : "dismiss") << QString::fromLatin1(call) << drops;
        }
    }

    void insideACall()
    {
        QFETCH(const QString, call);
        QFETCH(const bool, drops);
        Device::current().setOrientation(UIDeviceOrientation::Portrait);
        Scene scene(Fault::Kind::Delay, listeningPage());
        const auto plugInsPlayer = std::make_shared<QObject>();
        scene.addPlayer(plugInsPlayer);
        const auto hasEnded = scene.watch();
        QMetaObject::Connection focus;
        int calls = 0;
        const auto endIt = [&] {
            ++calls;
            if (drops) {
                scene.controller.reset();
                scene.views.clear();
            } else if (calls <= 3) { // Else it would go on for ever.
                scene.controller->dismiss();
            }
        };
        if (call.startsWith("selection"_L1))
            scene.host->onSelect = endIt;
        if (call == "selection"_L1) {
            scene.pick(1);
        } else if (call.startsWith("selection by the page"_L1)) {
            const QPointer<QObject> overlay(scene.overlay());
            evaluate(*scene.overlay(), u"setTimeout(() => { location.href = 'zelvano://index?1' }, 20)"_s);
            const QDeadlineTimer deadline(10s);
            while (call.endsWith("event loop"_L1) && overlay && !deadline.hasExpired())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        } else if (call.startsWith("selection"_L1)) {
            auto *const items = scene.views[call.endsWith("list"_L1) ? 0 : 1]->view();
            QVERIFY(waitUntil([&] { return qobject_cast<ZVItemView *>(items)->cellForRow(0); }));
            scene.window->grabWindow(); // Lays out all that is in it.
            tap(*scene.window, Pointer::Touch, items->mapToScene({60, 100}).toPoint());
        } else if (call == "done"_L1) {
            scene.host->onDone = endIt;
            scene.playerIs(u"done"_s);
        } else if (call == "focus"_L1) { // The overlay that goes gives the focus back.
            scene.overlay()->forceActiveFocus();
            focus = connect(&scene.window->below, &QQuickItem::activeFocusChanged, scene.window.get(), endIt);
            scene.controller->dismiss();
        } else if (call == "showing"_L1) {
            QVERIFY(waitUntil([&] { return !scene.overlay()->isVisible(); }));
            connect(scene.overlay(), &QQuickItem::visibleChanged, scene.window.get(), endIt, Qt::SingleShotConnection);
            scene.show();
        } else if (call == "Escape"_L1) {
            scene.service.settle(); // A call on its way keeps the controller.
            scene.show();
            scene.overlay()->forceActiveFocus();
            focus = connect(&scene.window->below, &QQuickItem::activeFocusChanged, scene.window.get(), endIt);
            QTest::keyClick(scene.window.get(), Qt::Key_Escape);
        } else if (call == "removal"_L1) {
            scene.service.settle();
            connect(scene.overlay(), &QQuickItem::parentChanged, scene.window.get(), endIt, Qt::SingleShotConnection);
            scene.controller->removeZelvanoRecommendations();
        } else if (call.startsWith("frame"_L1)) {
            scene.service.settle();
            scene.show();
            connect(scene.overlay(), &QQuickItem::widthChanged, scene.window.get(), endIt);
            if (call == "frame at a rotation"_L1)
                scene.overlay()->setHidden(true); // Else it follows the layout first.
            scene.playerView.setSize({200, 150});
            if (call == "frame at a rotation"_L1)
                Device::current().setOrientation(UIDeviceOrientation::PortraitUpsideDown);
        } else if (call == "native list"_L1) {
            scene.controller->setRecommendationView(std::make_shared<OwnView>(endIt));
            scene.recommend(3);
        } else {
            NotificationCenter::defaultCenter().addObserver(&scene, SuggestionsDidFetchedNotification,
                                                            [&](const Notification &) { endIt(); });
            if (call == "plug-in"_L1)
                scene.recommend(3, plugInsPlayer);
            else
                Device::current().setOrientation(UIDeviceOrientation::PortraitUpsideDown);
        }
        QVERIFY(waitUntil([&] { return calls > 0; }) && flushMainQueue());
        QCOMPARE(calls, 1);
        QVERIFY(!scene.controller || !scene.controller->playerView());
        NotificationCenter::defaultCenter().removeObserver(&scene);
        disconnect(focus);
        QCOMPARE(scene.host->done, !drops || call == "done"_L1 ? 1 : 0);
        scene.endAll();
        QVERIFY(waitUntil(hasEnded));
    }

    void applicationQuits()
    {
        QProcess host;
        host.setProcessChannelMode(QProcess::MergedChannels);
        host.start(QCoreApplication::applicationFilePath(), {u"quit"_s});
        QVERIFY(host.waitForFinished(60000));
        const auto output = host.readAll();
        QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0, output.constData());
        QVERIFY2(!output.contains("Sanitizer") && !output.contains("runtime error"), output.constData());
    }

    /// One session after another over one player, some with their page loading, none dismissed.
    void attachedAgainAndAgain()
    {
        ControllerSession session;
        QMediaPlayer player;
        QVERIFY(session.window->appear());
        std::vector<qsizetype> before;
        qsizetype descriptors = 0;
        for (int round = 0; round <= 100; ++round) {
            session.begin();
            const QList<QPointer<QObject>> parts{session.controller.get(), session.engine().get(), session.overlay()};
            session.controller->setPlayer(QtAVPlayerViewController::create(&player, &session.playerView), u"page"_s);
            if (round % 10 == 0)
                session.overlay()->setUrl(listeningPage());
            session.recommend(3);
            session.beReady();
            session.show();
            session.controller.reset();
            session.service.settle();
            QVERIFY(waitUntil([&] { return !parts[0] && !parts[1] && !parts[2]; }));
            const std::vector<qsizetype> left{session.window->contentItem()->childItems().size(),
                                              session.playerView.children().size(), player.children().size(),
                                              qApp->children().size()};
            if (round == 0) {
                before = left;
                descriptors = countOfOwn(u"fd"_s);
            }
            QCOMPARE(left, before);
        }
        constexpr int kept = 2 * 6; // Six connections that may be used again; the service is in this process, too.
        QVERIFY(waitUntil([&] { return countOfOwn(u"fd"_s) <= descriptors + kept; }));
    }
};

int main(int argc, char **argv)
{
    return argc == 2 && argv[1] == "quit"sv ? runQuittingHost(argc, argv) : runUiTest<tst_Teardown>(argc, argv);
}
#include "tst_Teardown.moc"
