#include "FakeKalturaPlayer.h"
#include "FakeMoviePlayer.h"
#include "FakePlayer.h"
#include "QmlHost.h"
#include "WebPage.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/QtKPViewController.h>
#include <ZelvanoUI/QtMPMoviePlayerController.h>

#include <QMediaPlayer>
#include <QStandardPaths>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

const auto player = u"MediaPlayer { id: media; videoOutput: output; source: window.first }\n"
                    "MediaPlayer { id: other; source: window.second }\n"
                    "VideoOutput { id: output; width: 320; height: 180 }\n"_s;
const auto session = u"Recommendations { id: recs; apiKey: 'key'; pageId: 'page'; suggestionCount: 5; player: media\n"
                     "onPlayerEvent: event => window.hear(event)\n"
                     "onSuggestionsFetched: window.hear('fetched ' + videos.length)\n"
                     "onVideoSelected: video => window.hear('selected ' + video.title)\n"
                     "onRunningChanged: window.hear('running ' + running)\n"
                     "onSessionEnded: reason => window.hear(['dismissed', 'resized', 'closed'][reason]) }\n"_s;
const auto list = u"RecommendationList { id: list; width: 320; height: 480; recommendations: recs\n"
                  "onVideoSelected: video => window.hear('list ' + video.title) }\n"_s;
const auto categories = u"RecommendationCategories { id: rows; width: 320; height: 480; recommendations: recs }\n"_s;

const auto plays = u"`${recs.currentSource}` === '%1' && media.playbackState === MediaPlayer.PlayingState"_s;
const auto fetched = u"recs.videos.length > 0"_s;

/// A host whose session has its first videos.
struct RunningHost : QmlHost
{
    explicit RunningHost(const QString &elements = {}) : QmlHost(player + session + elements)
    {
        if (!waitFor(fetched))
            qFatal("no videos");
        service.settle();
        run(u"heard = []"_s);
    }
};

} // namespace

class tst_Recommendations : public QObject
{
    Q_OBJECT

    std::function<void()> m_once;

public:
    Q_SLOT void actOnce()
    {
        if (const auto action = std::exchange(m_once, nullptr))
            action();
    }

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void attaching()
    {
        const auto without = [](const char *part, QString elements) {
            return elements.remove(QString::fromLatin1(part));
        };
        const auto all = player + session + list;
        const auto bare = without("source: window.first", all);
        // The elements, and what is done once the event loop came round.
        const std::pair<QString, const char *> cases[] = {
            {all, "null"},
            {bare, "media.source = window.first"},
            {bare, "media.play(); media.source = first"},
            {without("player: media", all), "recs.player = media"},
            {bare, "media.source = ''; recs.player = other"},
            {list + session + player, "null"},
            {without("recommendations: recs", all), "list.recommendations = recs"},
            {without("videoOutput: output;", all), "media.videoOutput = output"},
        };
        for (const auto &[elements, then] : cases) {
            const Case current((elements + u'\n' + QLatin1StringView(then)).toUtf8());
            QmlHost host(elements);
            QVERIFY(host.service.sent().isEmpty()); // Nothing before the event loop comes round.
            QCoreApplication::processEvents();
            host.run(QLatin1StringView(then));
            QVERIFY(host.waitFor(u"recs && "_s + fetched));
            QVERIFY(host.waitForItems(u"list"_s, 4));
            host.service.settle();
            QVERIFY(host.run(u"recs.running && recs.videoOutput?.width === recs.player.videoOutput?.width"_s).toBool());
            QCOMPARE(host.run(u"recs.videos.map(v => v.title).filter(t => t).length"_s).toInt(), 5);
            QVERIFY(host.service.sentCount(ZVReadyEvent) <= host.sessions());
            QCOMPARE(host.service.arrived(ZVPageEvent).body.value(u"pageUrl"_s), u"page"_s);
            QCOMPARE(host.keyOf(ZVReadyEvent), u"key"_s);
        }
    }

    void changes()
    {
        // With the number of further sessions, and whether one runs then.
        const std::tuple<const char *, int, bool> cases[] = {
            {"recs.apiKey = 'other'", 1, true},
            {"recs.pageId = 'other'", 1, true},
            {"recs.apiKey = 'a'; recs.pageId = 'b'; recs.pageId = 'c'; recs.suggestionCount = 3; recs.player = other;"
             "recs.player = media; recs.videoOutput = window.contentItem",
             1, true},
            {"recs.apiKey = 'key'; recs.player = media; recs.suggestionCount = 5", 0, true},
            {"media.source = window.second", 0, true},
            {"recs.player = other", 1, true},
            {"recs.playerKind = Recommendations.AVPlayer", 1, true},
            {"media.videoOutput = null", 1, true},
            {"recs.player = null", 0, false},
            {"recs.apiKey = ''", 0, false},
            {"recs.start(); recs.start()", 1, true},
            {"recs.dismiss(); recs.dismiss()", 0, false},
            {"recs.dismiss(); recs.apiKey = 'other'", 0, false},
            {"recs.dismiss(); recs.start()", 1, true},
            {"recs.start(); recs.dismiss()", 0, false},
        };
        for (const auto &[text, sessions, runs] : cases) {
            const Case current(text);
            const auto change = QString::fromLatin1(text);
            RunningHost host(list);
            QCOMPARE(host.sessions(), 1);
            host.run(change);
            QCOMPARE(host.service.sentCount(ZVRetrieveInit), 1);
            QCOMPARE(host.sessions(), 1 + sessions);
            QCOMPARE(host.run(u"recs.running"_s).toBool(), runs);
            QCOMPARE(host.heard().count(u"dismissed"_s),
                     change.contains(u"dismiss"_s) ? 1 : 0); // Not for a mere change.
            if (sessions > 0 && change.contains(u"apiKey"_s))
                QCOMPARE(host.keyOf(ZVRetrieveInit), host.run(u"recs.apiKey"_s).toString());
        }
    }

    /// While calls are under way.
    void anyOrderOfDestruction()
    {
        std::array names{u"list"_s, u"media"_s, u"output"_s, u"recs"_s};
        do {
            QmlHost host(player + session + list + categories);
            QCoreApplication::processEvents();
            QVERIFY(host.viewIn(u"list"_s) && host.viewIn(u"rows"_s));
            for (const auto &name : names) {
                delete host.object(name);
                QCoreApplication::processEvents();
                if (!host.object(u"recs"_s))
                    continue;
                QCOMPARE(host.run(u"recs.running"_s).toBool(), host.object(u"media"_s) != nullptr);
                QCOMPARE(host.run(u"recs.player"_s).value<QObject *>(), host.object(u"media"_s));
                QCOMPARE(host.run(u"!!recs.videoOutput"_s).toBool(),
                         host.object(u"media"_s) != nullptr && host.object(u"output"_s) != nullptr);
            }
            host.service.settle();
            QVERIFY(host.service.log.count(u"dealloc"_s) >= 1);
            QVERIFY(host.run(u"rows.recommendations === null"_s).toBool());
        } while (std::next_permutation(names.begin(), names.end()));
    }

    void endInsideAHandler()
    {
        for (const QByteArray signal :
             {"runningChanged()", "playerEvent(QString)", "videosChanged()", "suggestionsFetched()", "statusChanged()",
              "videoSelected(zelvano::RecommendedVideo)", "sessionEnded(zelvano::Recommendations::EndReason)"}) {
            for (const QString &action :
                 {u"recs.dismiss()"_s, u"recs.start()"_s, u"recs.player = null"_s, u"delete"_s}) {
                const Case current(signal + ", " + action.toLatin1());
                QmlHost host(player + session + list);
                const QPointer recs(host.object(u"recs"_s));
                m_once = [&] {
                    if (action == "delete"_L1)
                        delete recs;
                    else
                        host.run(action);
                };
                QVERIFY(connect(recs, ('2' + signal).constData(), SLOT(actOnce()))); // What SIGNAL() makes of it.
                if (signal.startsWith("videoSelected")) {
                    QVERIFY(host.window() && host.waitForItems(u"list"_s, 4));
                    host.viewIn(u"list"_s)->activate(0);
                } else if (signal.startsWith("sessionEnded")) {
                    QCoreApplication::processEvents();
                    host.run(u"recs.dismiss()"_s);
                } else if (signal.startsWith("playerEvent")) {
                    host.run(u"media.play()"_s);
                }
                QVERIFY(host.wait([&] { return !m_once; }));
                const auto sessions = host.sessions();
                QCOMPARE(!recs, action == "delete"_L1);
                if (action == "recs.start()"_L1)
                    QCOMPARE(sessions, 2);
                if (recs)
                    QCOMPARE(recs->property("running").toBool(), action == "recs.start()"_L1);
                QCOMPARE(host.service.log.count(u"dealloc"_s), 1);
            }
        }
    }

    /// The list's view goes inside a handler of the list, or of the host's own item in a cell.
    void endInsideAList()
    {
        const auto elements = u"property bool ended\n"
                              "function act(what) { if (what === '%1' && !ended) { ended = true; %2 } }\n"
                              "RecommendationList { id: list; width: 320; height: 480; recommendations: recs\n"
                              "onContentChanged: if (count > 0) window.act('filled')\n"
                              "delegate: MouseArea { required property recommendedVideo video\n"
                              "Component.onCompleted: window.act('made'); onClicked: window.act('clicked') } }\n"_s;
        const std::pair<QString, QString> cases[] = {{u"filled"_s, u"recs.active = false"_s},
                                                     {u"made"_s, u"recs.active = false"_s},
                                                     {u"clicked"_s, u"recs.active = false"_s},
                                                     {u"clicked"_s, u"list.delegate = null"_s}};
        for (const auto &[when, action] : cases) {
            const Case current((when + ", "_L1 + action).toLatin1());
            QmlHost host(player + session + elements.arg(when, action));
            QPointer<ZVItemView> view;
            QVERIFY(host.wait([&] { // Inside an event loop, as in a host.
                if (!view)
                    view = host.viewIn(u"list"_s);
                if (view)
                    view->layoutIfNeeded();
                if (view && view->cellForRow(1))
                    tap(*host.window(), Pointer::Mouse, centreOf(view->cellForRow(1)));
                return host.run(u"ended"_s).toBool();
            }));
            QVERIFY(waitUntil([&] { return !view; }));
        }
    }

    /// A frame that changes because the output goes away is no resize.
    void closing()
    {
        const std::pair<const char *, bool> cases[] = {
            {"output.visible = false; output.width = 300", true},
            {"output.parent = null; output.width = 300", true},
            {"output.width = 0", true},
            {"leaves the movie player", false}, // Only the host knows whether the viewer comes back.
        };
        for (const auto &[leave, comesBack] : cases) {
            const Case current(leave);
            RunningHost host;
            const auto movie = QtMPMoviePlayerController::create(qobject_cast<QMediaPlayer *>(host.object(u"media"_s)),
                                                                 qobject_cast<QQuickItem *>(host.object(u"output"_s)));
            if (!comesBack)
                host.setPlayer(movie.get());
            const auto before = host.sessions();
            if (comesBack)
                host.run(QLatin1StringView(leave));
            else
                movie->exit();
            QVERIFY(host.waitFor(u"heard.includes('done')"_s));
            QCOMPARE(host.heard().filter(QRegularExpression(u"dismissed|resized|closed"_s)), QStringList{u"closed"_s});
            host.service.advance(1000ms);
            QCOMPARE(host.sessions(), before);
            host.run(u"output.parent = window.contentItem; output.visible = true; output.width = 200"_s);
            host.service.advance(1000ms);
            QCOMPARE(host.sessions(), before + (comesBack ? 1 : 0));
        }
    }

    void resizing()
    {
        // What the host sets before, what it does before the output is at rest, and the number of sessions then.
        const std::tuple<const char *, const char *, int> cases[] = {
            {"null", "null", 2},
            {"null", "recs.start()", 2},
            {"null", "recs.dismiss()", 1},
            {"null", "recs.player = null", 1},
            {"recs.automaticRestart = false", "recs.pageId = 'other'", 1},
        };
        for (const auto &[before, meanwhile, sessions] : cases) {
            const Case current(meanwhile);
            RunningHost host;
            host.run(QLatin1StringView(before) + "; output.width = 300"_L1);
            QVERIFY(host.waitFor(u"heard.includes('done')"_s));
            QCOMPARE(host.heard(), QStringList({u"end"_s, u"running false"_s, u"resized"_s, u"done"_s}));
            host.service.advance(499ms);
            host.run(u"output.height = 100"_s); // Not at rest yet.
            host.service.advance(499ms);
            QCOMPARE(host.sessions(), 1);
            host.run(QLatin1StringView(meanwhile));
            QCoreApplication::processEvents();
            host.service.advance(1ms);
            QCOMPARE(host.sessions(), sessions);
            host.service.advance(1000ms);
            QCOMPARE(host.sessions(), sessions);
        }
    }

    void pauseAndPick()
    {
        RunningHost host;
        QVERIFY(host.waitForOverlay([&] {
            host.run(u"media.play()"_s);
            host.waitFor(u"media.position > %1"_s.arg(host.run(u"media.position"_s).toInt() + 100));
            host.run(u"media.pause()"_s);
            QCoreApplication::processEvents();
        }));
        QVERIFY(host.overlay()->isVisible());
        QCOMPARE(host.overlay()->frame(), QRectF(32, 18, 256, 144));
        host.run(u"heard = []; recs.overlayVisibleChanged.connect(() => heard.push(recs.overlayVisible)); "
                 "recs.hideOverlay()"_s);
        QVERIFY(!host.overlay()->isVisible());
        QCOMPARE(host.heard(), QStringList{u"false"_s});
        const auto url = host.run(u"recs.videos[2].url"_s).toString();
        host.overlay()->shouldStartLoadWithRequest(QUrl(u"zelvano://index?2"_s));
        QCOMPARE(host.heard().last(), "selected "_L1 + host.run(u"recs.videos[2].title"_s).toString());
        QVERIFY(host.waitFor(plays.arg(url)));
        host.run(u"service.announceChoice(window.first)"_s);
        QVERIFY(host.waitFor(u"heard.includes('recommendationClick')"_s));
        QCOMPARE(host.run(u"recs.currentSource"_s), host.run(u"window.first"_s));
    }

    void nativePick()
    {
        RunningHost host(list);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        host.viewIn(u"list"_s)->activate(1);
        QVERIFY(host.waitFor(u"heard[0] === 'selected ' + recs.videos[2].title"_s)); // The first is the overlay's.
        QCOMPARE(host.heard().filter(u"list"_s).size(), 1);
        QCOMPARE(host.run(u"recs.currentSource"_s), host.run(u"window.first"_s)); // The host's business.
        const auto url = host.run(u"recs.videos[1].url"_s).toString(); // The next recommendation brings others.
        host.run(u"list.recommendations.playNext(recs.videos[1])"_s);
        QVERIFY(host.waitFor(plays.arg(url)) && host.waitFor(u"heard.includes('play')"_s)); // And not "autoPlay".
    }

    void viewsComeAndGo()
    {
        QmlHost host(player + session + list + categories +
                     u"RecommendationList { id: late; width: 200; height: 200 }\n"_s +
                     u"Recommendations { id: second; apiKey: 'key'; player: other }"_s);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        host.viewIn(u"rows"_s)->layoutIfNeeded();
        QVERIFY(host.viewIn(u"rows"_s)->itemCount() > 0 && !host.viewIn(u"late"_s));
        host.run(u"late.recommendations = recs"_s);
        QVERIFY(host.waitForItems(u"late"_s, 4));
        const auto widthIn = [&](const QString &name) {
            host.viewIn(name)->layoutIfNeeded();
            return host.viewIn(name)->cellForRow(0)->width();
        };
        for (int time = 0; time < 2; ++time) // Each lays out by its own width.
            QVERIFY(widthIn(u"list"_s) > 1.5 * widthIn(u"late"_s));
        const QPointer before(host.viewIn(u"list"_s));
        host.run(u"recs.pageId = 'other'"_s);
        QVERIFY(before && waitUntil([&] { return !before; })); // Nothing of another page stays.
        QVERIFY(host.waitForItems(u"list"_s, 4) && host.waitForItems(u"late"_s, 4));

        const QPointer shown(host.viewIn(u"late"_s));
        host.run(u"late.recommendations = null; recs.start()"_s);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        QCOMPARE(host.viewIn(u"late"_s), shown.data()); // As it was.
        host.run(u"late.recommendations = second"_s);
        QVERIFY(host.waitFor(u"second.videos.length"_s) && host.waitForItems(u"late"_s, 7));
        QVERIFY(!shown);
    }

    void listsChangeWhileASessionBegins()
    {
        // What happens when a list takes its size, and the lists that have a view then.
        const std::tuple<const char *, int, bool> cases[] = {
            {"loader.active = true", 3, true},
            {"sibling.recommendations = null", 1, true},
            {"recommendations = null", 0, true},
        };
        for (const auto &[handler, views, runs] : cases) {
            const Case current(handler);
            const auto twin = u"RecommendationList { id: %1; property var sibling: %2; recommendations: recs\n"
                              "onImplicitWidthChanged: { %3 } }\n"_s;
            const auto change = QString::fromLatin1(handler);
            QmlHost host(player + session + twin.arg(u"one"_s, u"two"_s, change) +
                         twin.arg(u"two"_s, u"one"_s, change) +
                         u"Loader { id: loader; active: false\n"
                         "sourceComponent: RecommendationList { recommendations: recs } }\n"_s);
            QVERIFY(host.sessions() > 0);
            const auto count = u"[one, two, loader.item].filter(i => i?.recommendations && i.children.length).length"_s;
            QCOMPARE(host.run(count).toInt(), views);
            QCOMPARE(host.run(u"recs.running"_s).toBool(), runs);
        }
    }

    void consent()
    {
        auto inactive = session;
        QmlHost host(player + inactive.replace(u"player: media"_s, u"player: media; active: false"_s) + list);
        QVERIFY(host.sessions() == 0 && host.service.sent().isEmpty());
        QCOMPARE(host.run(u"recs.status"_s), host.run(u"Recommendations.Idle"_s));
        host.service.fault(ZVRetrieveInit, {.delay = 500ms});
        host.run(u"recs.active = true"_s);
        QVERIFY(host.waitFor(u"recs.status === Recommendations.Connecting"_s));
        host.run(u"recs.active = false"_s); // While the channel opens.
        const auto nothingMore = [&] {
            host.service.settle();
            const auto requests = host.service.sandbox.requests().size();
            host.run(u"media.play()"_s);
            host.service.advance(1h);
            return host.service.sandbox.requests().size() == requests;
        };
        QVERIFY(nothingMore());
        QCOMPARE(host.service.sent(), QStringList{ZVRetrieveInit});

        host.run(u"heard = []; recs.active = true"_s);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        host.service.settle();
        QCOMPARE(host.run(u"recs.status"_s), host.run(u"Recommendations.Ready"_s));
        host.run(u"heard = []; recs.active = false"_s);
        QCOMPARE(host.heard(), QStringList({u"running false"_s, u"dismissed"_s}));
        QVERIFY(host.run(u"recs.videos.length === 0 && recs.status === Recommendations.Idle"_s).toBool());
        QVERIFY(!host.viewIn(u"list"_s) && nothingMore());
        host.run(u"recs.dismiss(); recs.active = true"_s); // As before: dismissed.
        QCOMPARE(host.sessions(), 2);
    }

    void wrongProperties()
    {
        const std::tuple<const char *, const char *, const char *> cases[] = {
            {"recs.playerKind = 77", "playerKind is 77", "recs.playerKind = Recommendations.MoviePlayer"},
            {"recs.suggestionCount = -1", "suggestionCount is -1", "recs.suggestionCount = 0"},
            {"recs.player = output", "player is a QQuickVideoOutput, and not a MediaPlayer", "recs.player = media"},
            {"recs.player = unowned", "player is a zelvano::AVPlayer that no std::shared_ptr owns",
             "recs.player = other"},
        };
        FakePlayer unowned(u"http://videos.example/1.mp4"_s);
        for (const auto &[wrong, message, right] : cases) {
            const Case current(wrong);
            RunningHost host;
            host.qml.rootContext()->setContextProperty(u"unowned"_s, &unowned);
            QStringList warnings;
            QObject::connect(&host.qml, &QQmlEngine::warnings, [&](const auto &all) {
                for (const auto &warning : all)
                    warnings.append(warning.description());
            });
            for (const QString &step : {QString::fromLatin1(wrong), u"recs.start()"_s}) {
                host.run(step);
                QCoreApplication::processEvents();
                QCOMPARE(host.run(u"recs.status"_s), host.run(u"Recommendations.Failed"_s));
                QVERIFY(host.run(u"recs.errorString"_s).toString().startsWith(QLatin1StringView(message)));
                QVERIFY(!host.run(u"recs.running"_s).toBool());
            }
            QCOMPARE(warnings.size(), 1);
            QVERIFY(warnings.first().contains(QLatin1StringView(message)));
            host.run(QLatin1StringView(right));
            QVERIFY(host.waitFor(u"recs.status === Recommendations.Ready && recs.errorString === ''"_s));
            QCOMPARE(warnings.size(), 1);
        }
    }

    void statusFollowsTheService()
    {
        using sandbox::Fault;
        for (const auto call : {ZVRetrieveInit, ZVPageEvent, ZVReadyEvent}) {
            QmlHost host(player + session);
            host.run(u"recs.statusChanged.connect(() => heard.push(`${recs.status} ${recs.errorString}`))"_s);
            host.service.fault(call, {Fault::Kind::ServiceStatus});
            QVERIFY(host.waitFor(u"recs.status === Recommendations.Failed"_s));
            QCOMPARE(host.run(u"recs.errorString"_s), u"the call \"%1\" failed: status 500"_s.arg(call));
            QVERIFY(host.run(u"recs.running"_s).toBool());
            host.service.settle();
            host.run(u"heard = []; recs.start()"_s);
            QVERIFY(host.waitFor(u"recs.status === Recommendations.Ready"_s));
            QCOMPARE(host.heard().filter(QRegularExpression(u"^\\d"_s)), QStringList({u"1 "_s, u"2 "_s}));
        }
        QmlHost host(player + session);
        host.run(u"media.source = ''"_s);
        QCOMPARE(host.sessions(), 1);
        QCOMPARE(host.run(u"recs.status"_s), host.run(u"Recommendations.Connecting"_s)); // Until there is a video.
    }

    /// The players of a host that are no MediaPlayer, in no window: the overlay appears in the named one.
    void otherPlayers()
    {
        const auto bare = makeMainThreadShared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        const auto inner = makeMainThreadShared<FakePlayer>(u"http://videos.example/1.mp4"_s);
        const auto framed = makeMainThreadShared<FakeViewController>(inner);
        framed->bounds = {0, 0, 320, 180};
        framed->setProperty("player", QVariant::fromValue<QObject *>(inner.get())); // The host's own property.
        const auto movie = makeMainThreadShared<FakeMoviePlayer>();
        movie->setContentURL(QUrl(u"http://videos.example/1.mp4"_s));
        FakeKalturaPlayer kaltura; // The library does not hold such a player: any owner will do.
        const std::tuple<QObject *, std::function<void()>, QString> cases[] = {
            {bare.get(), [&] { bare->becomeReady(); }, u"avplayer"_s},
            {framed.get(), [&] { inner->becomeReady(); }, u"avplayer"_s},
            {movie.get(), [&] { movie->load(1); }, u"mpmovieplayer"_s},
            {&kaltura, [&] { kaltura.tellLoadState(1); }, QString()},
        };
        for (const auto &[object, becomeReady, id] : cases) {
            const Case current(object->metaObject()->className());
            QmlHost host(QString(session).replace(u"player: media"_s, u"window: other"_s) +
                         u"Window { id: other; visible: true; width: 200; height: 200 }\n"_s);
            host.setPlayer(object);
            QCOMPARE(host.sessions(), 1);
            becomeReady();
            QVERIFY(host.waitFor(fetched));
            QCOMPARE(host.service.arrived(ZVReadyEvent).body.value(u"playerId"_s).toString(), id);
            if (object != framed.get())
                continue;
            host.window()->requestActivate();
            QVERIFY(host.waitForOverlay([&] {
                inner->play();
                inner->pause();
            }));
            QVERIFY(host.overlay(qobject_cast<QQuickWindow *>(host.object(u"other"_s))) && !host.overlay());
        }
    }

    void kaltura()
    {
        QmlHost host(u"KalturaPlayer { id: web; width: 640; height: 360\n"
                     "onPluginVideoSelected: params => { window.hear(params.videoId); changeMedia(params.videoId) } }\n"
                     "Recommendations { id: recs; apiKey: 'key'; suggestionCount: 8; player: web }\n"_s);
        QCOMPARE(host.sessions(), 0); // There is no player without a page.
        host.run(u"web.source = `${window.first}`.replace('media/1.mp4', 'kaltura/?entryId=sandbox-2')"_s);
        QVERIFY(host.waitFor(fetched));
        const auto *page = qobject_cast<QQuickItem *>(host.run(u"web.children[0]"_s).value<QObject *>());
        QCOMPARE(page->size(), QSizeF(640, 360));
        QVERIFY(host.run(u"web.entryId === 'sandbox-2' && web.duration >= 10 && web.paused"_s).toBool());
        host.run(u"web.play()"_s);
        QVERIFY(host.waitFor(u"!web.paused && web.position > 0"_s));
        host.run(u"web.changeMedia('sandbox-3')"_s);
        QVERIFY(host.waitFor(u"web.entryId === 'sandbox-3' && web.position > 0"_s));
        host.run(u"web.pause()"_s);
        QVERIFY(host.waitFor(u"web.paused"_s));
        auto *const web = page->findChild<QQuickItem *>(u"webView"_s);
        QVERIFY(host.wait([&] { return evaluateIn(web, u"document.querySelectorAll('[data-index]').length"_s) == 6; }));
        evaluateIn(web, u"document.querySelector('[data-index=\"1\"]').click()"_s);
        QVERIFY(host.waitFor(u"heard.length && web.entryId === heard[0]"_s));
        QCOMPARE(host.heard().size(), 1); // Although the player became playable more than once.
    }

    void address()
    {
        RunningHost host;
        sandbox::Sandbox other;
        QVERIFY(other.start());
        const auto authority = other.url().authority();
        host.run(u"service.address = '%1'"_s.arg(authority));
        QVERIFY(host.wait([&] { return !other.requests().empty(); })); // The session began again.
        host.run(u"service.address = 'no address'"_s);
        QQmlEngine second;
        second.addImportPath(QStringLiteral(ZELVANO_QML_DIR));
        QQmlComponent component(&second);
        component.setData(
            "import QtQml; import ZelvanoUI; QtObject { property string at: RecommendationService.address }", {});
        const std::unique_ptr<QObject> object(component.create());
        QCOMPARE(object->property("at"), authority); // In every engine.
        host.run(u"recs.active = false; service.address = ''"_s);
    }

    void listStates()
    {
        for (const auto scenario : {sandbox::Scenario::Ordinary, sandbox::Scenario::Empty}) {
            QmlHost host(player + session + list + categories);
            const auto hear = u"%1.contentChanged.connect(() => hear('empty ' + %1.empty)); "_s;
            host.run(hear.arg(u"list"_s) + hear.arg(u"rows"_s));
            host.service.sandbox.setScenario(scenario);
            host.service.fault(ZVReadyEvent, {.delay = 300ms}); // So that the lists are seen while they wait.
            const bool hasVideos = scenario == sandbox::Scenario::Ordinary;
            const auto is = [&](const QString &condition) {
                return host.waitFor(u"list."_s + condition) && host.waitFor(u"rows."_s + condition);
            };
            QVERIFY(host.waitFor(u"[list, rows].every(i => i.loading && !i.empty && !i.count && !i.contentHeight)"_s));
            QVERIFY(hasVideos ? host.waitForItems(u"list"_s, 4) && is(u"count > 0"_s) && is(u"contentHeight > 0"_s)
                              : is(u"empty"_s));
            QVERIFY(is(u"loading === false"_s) && is(u"empty === %1"_s.arg(hasVideos ? u"false"_s : u"true"_s)));
            host.run(u"recs.start()"_s);
            QCOMPARE(host.sessions(), 2);
            QVERIFY(is(u"loading === false"_s));
            QCOMPARE(host.heard().contains(u"empty true"_s), !hasVideos); // Not even for a moment.
        }
    }

    void listLook()
    {
        const auto look = u"%1 { id: %2; width: 320; height: 480; recommendations: recs; cellRadius: 12\n"
                          "titleColor: 'red'; delegate: Rectangle { required property recommendedVideo video\n"
                          "objectName: 'own'; property string title: video.title } }\n"_s;
        QmlHost host(player + session + look.arg(u"RecommendationList"_s, u"list"_s) +
                     look.arg(u"RecommendationCategories"_s, u"rows"_s));
        QVERIFY(host.waitForItems(u"list"_s, 4) && host.waitFor(u"rows.count > 0"_s));
        host.run(u"list.width = 400"_s);
        for (const auto &name : {u"list"_s, u"rows"_s})
            host.viewIn(name)->layoutIfNeeded();
        const auto *row = host.viewIn(u"rows"_s)->cellForRow(0);
        for (const auto *view : {host.viewIn(u"list"_s), row->findChild<ZVItemView *>(u"videosCollectionView"_s)}) {
            const auto all = view->cellForRow(0)->findChildren<QQuickItem *>(u"own"_s);
            QCOMPARE(all.size(), 1);
            const auto *own = all.first();
            const auto *cell = own->parentItem();
            QCOMPARE(own->size(), cell->size());
            QCOMPARE(cell->property("corner"), 12);
            QCOMPARE(cell->findChild<QQuickItem *>(u"titleLable"_s)->property("color"), QColor(Qt::red));
            QVERIFY(!cell->findChild<QQuickItem *>(u"titleLable"_s)->isVisible());
            QVERIFY(host.run(u"recs.videos.map(v => v.title)"_s)
                        .toStringList()
                        .contains(own->property("title").toString()));
        }
        host.run(u"list.delegate = null"_s);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        QVERIFY(!host.viewIn(u"list"_s)->cellForRow(0)->findChild<QQuickItem *>(u"own"_s));
    }

    void inspector()
    {
        RunningHost host(u"EventLog { id: events; recommendations: recs }\n"
                         "EventTimeline { id: timeline; log: events; width: 400; height: 480 }\n"_s);
        const auto find = [&](const QString &name) { return host.window()->findChild<QQuickItem *>(name); };
        const auto type = [&](const QString &text) {
            auto *const field = find(u"filter"_s);
            field->setProperty("text", QString());
            field->forceActiveFocus();
            for (const auto character : text)
                QTest::keyClick(host.window(), character.toLatin1());
        };
        auto *const list = find(u"events"_s);
        auto *const details = find(u"details"_s);
        const auto rows = [&] { return list->property("count").toInt(); };
        QCOMPARE(rows(), host.run(u"events.count"_s).toInt());
        type(u"READY"_s);
        QCOMPARE(rows(), 2); // The request and its answer.
        type(u"channels"_s);
        QVERIFY(!details->isVisible());
        list->forceActiveFocus();
        QTest::keyClick(host.window(), Qt::Key_Down);
        QVERIFY(waitUntil([&] { return details->isVisible(); }));
        QVERIFY(QJsonDocument::fromJson(details->property("text").toByteArray()).isObject());

        QFile file(host.run(u"events.exportToDownloads()"_s).toUrl().toLocalFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().count('\n'), host.run(u"events.count"_s).toInt());
        QVERIFY(file.remove());
        host.run(u"events.clear()"_s);
        QCOMPARE(rows(), 0);

        type({});
        host.run(u"recs.start()"_s); // Another session's engine is seen, too.
        QVERIFY(host.waitFor(u"events.toJsonLines().toString().includes('\"what\":\"suggestionsDidFetched\"')"_s));
        host.run(u"events.recommendationsChanged.connect(() => hear(events.recommendations)); recs.destroy()"_s);
        QVERIFY(host.waitFor(u"heard.includes(null)"_s));
        QVERIFY(rows() > 0);
    }
};

UI_TEST_MAIN(tst_Recommendations)
#include "tst_Recommendations.moc"
