#include "QmlHost.h"

#include <QMediaPlayer>
#include <QSignalSpy>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {

/// Does something the first time that it is told to.
class Once : public QObject
{
    Q_OBJECT

public:
    explicit Once(std::function<void()> action) : m_action(std::move(action)) {}
    Q_SLOT void act()
    {
        if (!std::exchange(done, true))
            m_action();
    }

    bool done = false;

private:
    const std::function<void()> m_action;
};

const auto player = u"MediaPlayer { id: media; videoOutput: output; source: window.first }\n"
                    "MediaPlayer { id: other; source: window.second }\n"
                    "VideoOutput { id: output; width: 320; height: 180 }\n"_s;
const auto session = u"Recommendations { id: recs; apiKey: 'key'; pageId: 'page'; suggestions: 5; player: media\n"
                     "onStateChanged: state => window.hear(state)\n"
                     "onSuggestionsFetched: window.hear('fetched ' + videos.length)\n"
                     "onVideoSelected: video => window.hear('selected ' + video.title)\n"
                     "onRunningChanged: window.hear('running ' + running)\n"
                     "onFinished: window.hear('finished') }\n"_s;
const auto list = u"RecommendationList { id: list; width: 320; height: 480; recommendations: recs\n"
                  "onVideoSelected: video => window.hear('list ' + video.title) }\n"_s;
const auto categories = u"RecommendationCategories { id: rows; width: 320; height: 480; recommendations: recs }\n"_s;

const auto plays = u"`${recs.currentSource}` === '%1' && media.playbackState === MediaPlayer.PlayingState"_s;
const auto fetched = u"recs.videos.length > 0"_s;

} // namespace

class tst_Recommendations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void attaching_data()
    {
        QTest::addColumn<QString>("elements");
        QTest::addColumn<QString>("then"); // Once the event loop came round.
        const auto without = [](const char *part, QString elements) {
            return elements.remove(QString::fromLatin1(part));
        };
        const auto all = player + session + list;
        const auto bare = without("source: window.first", all);
        QTest::newRow("source before") << all << u"null"_s;
        QTest::newRow("source after") << bare << u"media.source = window.first"_s;
        QTest::newRow("source after the player plays") << bare << u"media.play(); media.source = first"_s;
        QTest::newRow("player later") << without("player: media", all) << u"recs.player = media"_s;
        QTest::newRow("player and source later")
            << without("player: media", bare) << u"recs.player = media; media.source = window.first"_s;
        QTest::newRow("another player for one without source") << bare << u"media.source = ''; recs.player = other"_s;
        QTest::newRow("any order of declaration") << list + session + player << u"null"_s;
        QTest::newRow("list later") << without("recommendations: recs", all) << u"list.recommendations = recs"_s;
        QTest::newRow("output later") << without("videoOutput: output;", all) << u"media.videoOutput = output"_s;
        QTest::newRow("whole host in a loader")
            << u"property alias recs: loader.recs; property alias list: loader.list\n"
               "property alias media: loader.media\n"
               "Loader { id: loader; asynchronous: true; property var recs: item && item.recs\n"
               "property var list: item && item.list; property var media: item && item.media\n"
               "sourceComponent: Item { property alias recs: recs; property alias list: list\n"
               "property alias media: media\n"_s +
                   all + u"} }"_s
            << u"null"_s;
    }

    void attaching()
    {
        QFETCH(const QString, elements);
        QFETCH(const QString, then);
        QmlHost host(elements);
        QCOMPARE(host.service.sent(), QStringList()); // Nothing before the event loop comes round.
        QCoreApplication::processEvents();
        host.run(then);
        QVERIFY(host.waitFor(u"recs && "_s + fetched));
        QVERIFY(host.waitForItems(u"list"_s, 4));
        host.service.settle();
        QVERIFY(host.run(u"recs.running && recs.videoOutput?.width === recs.player.videoOutput?.width"_s).toBool());
        QCOMPARE(host.run(u"recs.videos.map(v => v.title).filter(t => t).length"_s).toInt(), 5);
        QVERIFY(host.service.sentCount(ZVReadyEvent) <= host.sessions());
        QCOMPARE(host.service.arrived(ZVPageEvent).body.value(u"pageUrl"_s), u"page"_s);
        QCOMPARE(host.keyOf(ZVReadyEvent), u"key"_s);
    }

    void changes_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<int>("sessions"); // Further ones.
        QTest::addColumn<bool>("runs");
        QTest::newRow("key") << u"recs.apiKey = 'other'"_s << 1 << true;
        QTest::newRow("page") << u"recs.pageId = 'other'"_s << 1 << true;
        QTest::newRow("many at once")
            << u"recs.apiKey = 'a'; recs.pageId = 'b'; recs.pageId = 'c'; recs.suggestions = 3; recs.player = other;"
               "recs.player = media; recs.videoOutput = window.contentItem"_s
            << 1 << true;
        QTest::newRow("nothing new") << u"recs.apiKey = 'key'; recs.player = media; recs.suggestions = 5"_s << 0
                                     << true;
        QTest::newRow("source") << u"media.source = window.second"_s << 0 << true;
        QTest::newRow("player") << u"recs.player = other"_s << 1 << true;
        QTest::newRow("kind") << u"recs.playerKind = Recommendations.AVPlayer"_s << 1 << true;
        QTest::newRow("no kind") << u"recs.playerKind = 77"_s << 0 << false;
        QTest::newRow("output of the player") << u"media.videoOutput = null"_s << 1 << true;
        QTest::newRow("no player") << u"recs.player = null"_s << 0 << false;
        QTest::newRow("no key") << u"recs.apiKey = ''"_s << 0 << false;
        QTest::newRow("restart") << u"recs.start(); recs.start()"_s << 1 << true;
        QTest::newRow("dismiss") << u"recs.dismiss(); recs.dismiss()"_s << 0 << false;
        QTest::newRow("dismiss, then change") << u"recs.dismiss(); recs.apiKey = 'other'"_s << 0 << false;
        QTest::newRow("dismiss, then start") << u"recs.dismiss(); recs.start()"_s << 1 << true;
        QTest::newRow("start, then dismiss") << u"recs.start(); recs.dismiss()"_s << 0 << false;
    }

    void changes()
    {
        QFETCH(const QString, change);
        QFETCH(const int, sessions);
        QFETCH(const bool, runs);
        QmlHost host(player + session + list);
        QVERIFY(host.waitFor(fetched));
        QCOMPARE(host.sessions(), 1);
        host.run(u"heard = []; "_s + change);
        QCOMPARE(host.service.sentCount(ZVRetrieveInit), 1);
        QCOMPARE(host.sessions(), 1 + sessions);
        QCOMPARE(host.run(u"recs.running"_s).toBool(), runs);
        QCOMPARE(host.heard().count(u"finished"_s), change.contains(u"dismiss"_s) ? 1 : 0); // Not for a mere change.
        if (sessions > 0 && change.contains(u"apiKey"_s))
            QCOMPARE(host.keyOf(ZVRetrieveInit), host.run(u"recs.apiKey"_s).toString());
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

    void endInsideAHandler_data()
    {
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<QString>("action");
        for (const auto *signal : {"runningChanged()", "stateChanged(QString)", "videosChanged()",
                                   "suggestionsFetched()", "videoSelected(zelvano::RecommendedVideo)", "finished()"}) {
            for (const auto *action : {"recs.dismiss()", "recs.start()", "recs.player = null", "delete"})
                QTest::addRow("%s, %s", signal, action) << QByteArray(signal) << QString::fromLatin1(action);
        }
    }

    void endInsideAHandler()
    {
        QFETCH(const QByteArray, signal);
        QFETCH(const QString, action);
        QmlHost host(player + session + list);
        const QPointer recs(host.object(u"recs"_s));
        Once once([&] {
            if (action == "delete"_L1)
                delete recs;
            else
                host.run(action);
        });
        QVERIFY(QObject::connect(recs, ('2' + signal).constData(), &once, SLOT(act()))); // What SIGNAL() makes of it.
        if (signal.startsWith("videoSelected")) {
            QVERIFY(host.window() && host.waitForItems(u"list"_s, 4));
            host.viewIn(u"list"_s)->cellForRow(0)->activate();
        } else if (signal.startsWith("finished")) {
            QCoreApplication::processEvents();
            host.run(u"recs.dismiss()"_s);
        } else if (signal.startsWith("state")) {
            host.run(u"media.play()"_s);
        }
        QVERIFY(host.wait([&] { return once.done; }));
        const auto sessions = host.sessions();
        QCOMPARE(!recs, action == "delete"_L1);
        if (action == "recs.start()"_L1)
            QCOMPARE(sessions, 2);
        if (recs)
            QCOMPARE(recs->property("running").toBool(), action == "recs.start()"_L1);
        QCOMPARE(host.service.log.count(u"dealloc"_s), 1);
    }

    void resizing_data()
    {
        QTest::addColumn<QString>("meanwhile");
        QTest::addColumn<int>("sessions");
        QTest::newRow("restart") << u"null"_s << 2;
        QTest::newRow("restarted by hand") << u"recs.start()"_s << 2;
        QTest::newRow("dismissed") << u"recs.dismiss()"_s << 1;
        QTest::newRow("player goes") << u"recs.player = null"_s << 1;
    }

    void resizing()
    {
        QFETCH(const QString, meanwhile);
        QFETCH(const int, sessions);
        QmlHost host(player + session);
        QVERIFY(host.waitFor(fetched));
        host.service.settle();
        host.run(u"heard = []; output.width = 300"_s);
        QVERIFY(host.waitFor(u"heard.includes('done')"_s));
        QCOMPARE(host.heard(), QStringList({u"end"_s, u"running false"_s, u"finished"_s, u"done"_s}));
        host.service.advance(499ms);
        host.run(u"output.height = 100"_s); // Not at rest yet.
        host.service.advance(499ms);
        QCOMPARE(host.sessions(), 1);
        host.run(meanwhile);
        host.service.advance(1ms);
        QCOMPARE(host.sessions(), sessions);
        host.service.advance(1000ms);
        QCOMPARE(host.sessions(), sessions);

        host.run(u"heard = []; recs.player = media; recs.start(); recs.automaticRestart = false"_s);
        QVERIFY(host.waitFor(u"heard.includes('fetched 5')"_s));
        host.service.settle();
        host.run(u"heard = []; output.width = 200"_s);
        QVERIFY(host.waitFor(u"heard.includes('finished')"_s));
        const auto before = host.sessions();
        host.run(u"recs.pageId = 'other'"_s);
        host.service.advance(1000ms);
        QCOMPARE(host.sessions(), before);
    }

    void pauseAndPick()
    {
        QmlHost host(player + session);
        QVERIFY(host.waitFor(fetched));
        const bool isShown = waitUntil([&] { // The page takes its time to load.
            host.run(u"media.play()"_s);
            const auto position = host.run(u"media.position"_s).toInt();
            host.waitFor(u"media.position > %1"_s.arg(position + 100));
            host.run(u"media.pause()"_s);
            QCoreApplication::processEvents();
            host.service.queue().advance(500ms);
            return host.overlay() != nullptr;
        });
        QVERIFY(isShown);
        QVERIFY(host.overlay()->isVisible());
        QCOMPARE(host.overlay()->frame(), QRectF(32, 18, 256, 144));
        const auto url = host.run(u"recs.videos[2].url"_s).toString();
        host.overlay()->shouldStartLoadWithRequest(QUrl(u"zelvano://index?2"_s));
        QCOMPARE(host.heard().last(), "selected "_L1 + host.run(u"recs.videos[2].title"_s).toString());
        QVERIFY(host.waitFor(plays.arg(url)));
        host.run(u"recs.announceChoice(window.first)"_s);
        QVERIFY(host.heard().contains(u"recommendationClick"_s) ||
                host.waitFor(u"heard.includes('recommendationClick')"_s));
        QCOMPARE(host.run(u"recs.currentSource"_s), host.run(u"window.first"_s));
    }

    void nativePick()
    {
        QmlHost host(player + session + QString(list).replace(u"id: list;"_s, u"id: list; x: 320;"_s));
        host.window()->requestActivate();
        QVERIFY(host.waitForItems(u"list"_s, 4));
        QVERIFY(waitUntil([&] { return host.window()->isActive(); }));
        QTest::keyClick(host.window(), Qt::Key_Tab);
        QVERIFY(host.viewIn(u"list"_s)->hasActiveFocus());
        QCOMPARE(host.viewIn(u"list"_s)->size(), QSizeF(320, 480));
        host.service.settle();
        host.run(u"heard = []"_s);
        QTest::keyClick(host.window(), Qt::Key_Right);
        QTest::keyClick(host.window(), Qt::Key_Return);
        QVERIFY(host.waitFor(u"heard[0] === 'selected ' + recs.videos[2].title"_s)); // The first is the overlay's.
        tap(*host.window(), Pointer::Mouse, centreOf(host.viewIn(u"list"_s)->cellForRow(0)));
        QVERIFY(host.waitFor(u"heard[2] === 'selected ' + recs.videos[1].title"_s));
        QCOMPARE(host.heard().filter(u"list"_s).size(), 2);
        QCOMPARE(host.run(u"recs.currentSource"_s), host.run(u"window.first"_s));
        const auto url = host.run(u"recs.videos[1].url"_s).toString(); // The next recommendation brings others.
        host.run(u"list.recommendations.playNext(recs.videos[1])"_s);
        QVERIFY(host.waitFor(plays.arg(url)));
    }

    void viewsComeAndGo()
    {
        QmlHost host(player + session + list + categories +
                     u"RecommendationList { id: late; width: 200; height: 200 }\n"_s +
                     u"Recommendations { id: second; apiKey: 'key'; player: other }"_s);
        QVERIFY(host.waitForItems(u"list"_s, 4));
        host.viewIn(u"rows"_s)->layoutIfNeeded();
        QVERIFY(host.run(u"rows.implicitWidth > 0"_s).toBool() && host.viewIn(u"rows"_s)->itemCount() > 0);
        QVERIFY(!host.viewIn(u"late"_s));
        host.run(u"late.recommendations = recs"_s);
        QVERIFY(host.waitForItems(u"late"_s, 4));
        const auto widthIn = [&](const QString &name) {
            host.viewIn(name)->invalidateLayout();
            host.viewIn(name)->layoutIfNeeded();
            return host.viewIn(name)->cellForRow(0)->width();
        };
        QVERIFY(widthIn(u"list"_s) > 1.5 * widthIn(u"late"_s)); // Each lays out by its own width.
        QVERIFY(widthIn(u"list"_s) > 1.5 * widthIn(u"late"_s));
        const QPointer before(host.viewIn(u"list"_s));
        host.run(u"recs.pageId = 'other'"_s);
        QVERIFY(before);
        QVERIFY(waitUntil([&] { return !before; })); // Nothing of another page stays.
        QVERIFY(host.waitForItems(u"list"_s, 4));
        QVERIFY(host.waitForItems(u"late"_s, 4));

        const QPointer shown(host.viewIn(u"late"_s));
        // Counted: that there are no videos in between may last for less than it takes to look.
        const QSignalSpy fetchedAgain(host.object(u"recs"_s), SIGNAL(suggestionsFetched()));
        host.run(u"late.recommendations = null; recs.start()"_s);
        QVERIFY(host.wait([&] { return !fetchedAgain.isEmpty(); }));
        QVERIFY(host.waitForItems(u"list"_s, 4));
        QCOMPARE(host.viewIn(u"late"_s), shown.data()); // As it was.
        host.run(u"late.recommendations = second"_s);
        QVERIFY(host.waitFor(u"second.videos.length"_s) && host.waitForItems(u"late"_s, 7));
        QVERIFY(!shown);
    }
};

UI_TEST_MAIN(tst_Recommendations)
#include "tst_Recommendations.moc"
