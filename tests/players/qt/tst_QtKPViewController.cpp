#include "Columns.h"
#include "LogCollector.h"
#include "Process.h"
#include "RecordingSubscription.h"
#include "WebPage.h"
#include "ZVKalturaSubscribe.h"
#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>
#include <ZelvanoUI/QtKPViewController.h>
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/ZelvanoViewController.h>

using namespace Qt::StringLiterals;
using namespace zelvano;

/// The web player and its adapter, over the sandbox's player page with its plug-in.
class tst_QtKPViewController : public QObject
{
    Q_OBJECT

    HostWindow window;
    sandbox::Sandbox sandbox;
    std::shared_ptr<QtKPViewController> player;
    std::shared_ptr<ZVKalturaSubscribe> adapter;
    std::shared_ptr<RecordingSubscription> engine;
    QStringList heard;

    /// On the screen, with an adapter that reports to the engine.
    void openPage(const QUrl &page)
    {
        heard.clear();
        engine = std::make_shared<RecordingSubscription>();
        player = QtKPViewController::create(page);
        auto *const item = qobject_cast<QQuickItem *>(player->view());
        QVERIFY(item);
        item->setParentItem(window.contentItem());
        item->setSize({640, 480});
        adapter = ZVKalturaSubscribe::create(player);
        adapter->setObserver(engine);
    }
    void open(const QString &query) { openPage(sandbox.url(u"/kaltura/?"_s + query)); }
    bool hears(const QString &what, qsizetype times = 1)
    {
        return waitUntil([&] {
            heard += engine->take();
            return heard.count(what) >= times;
        });
    }
    QVariant inPage(const QString &expression) { return evaluateIn(player->webView(), expression); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(window.appear());
        QVERIFY(sandbox.start());
    }
    void session()
    {
        open(u"entryId=sandbox-2"_s);
        QVERIFY(hears(u"(ready)"_s, 2));
        QCOMPARE(heard.first(), u"(page)"_s);
        QCOMPARE(adapter->videoId(), u"sandbox-2"_s);
        QVERIFY(adapter->duration().value_or(0) >= 10 && adapter->parentView() == player->view());
        QCOMPARE(adapter->videoSize(), QSizeF(640, 360));
        QCOMPARE(player->videoBounds(), QRectF(0, 60, 640, 360));
        heard.clear();
        player->play();
        QVERIFY(hears(u"play"_s));
        QVERIFY(waitUntil([&] { return adapter->currentPosition() > 0.2; }));
        player->pause();
        QVERIFY(hears(u"pause"_s));
        player->seek(6);
        QVERIFY(hears(u"seek"_s));
        QVERIFY(waitUntil([&] { return adapter->currentPosition() >= 6; }));
        player->seek(adapter->duration().value_or(0) - 0.3);
        player->play();
        QVERIFY(hears(u"ended"_s));
        QCOMPARE(heard, (QStringList{u"play"_s, u"pause"_s, u"seek"_s, u"seek"_s, u"play"_s, u"ended"_s}));
    }

    void rendererEnds()
    {
        for (const QByteArray state : {"outside the window", "shown", "hidden", "teardown"}) {
            const Case current(state);
            for (int rounds = figure("ZELVANO_ROUNDS", 5); rounds > 0; --rounds) {
                const LogCollector log;
                open(u"entryId=1"_s);
                QVERIFY(hears(u"(ready)"_s));
                auto *const item = qobject_cast<QQuickItem *>(player->view());
                if (state == "outside the window")
                    item->setParentItem(nullptr);
                item->setVisible(state != "hidden");
                QVERIFY(killRenderers() > 0);
                if (state == "teardown") {
                    adapter.reset();
                    player.reset();
                    QTest::qWait(20);
                    continue;
                }
                QVERIFY(waitUntil([&] { return log.beginningWith(u"Error: the renderer process"_s).size() == 1; }));
                item->setVisible(true);
                int loads = 0; // The page says so when it has loaded again.
                connect(player.get(), &KPViewController::loadStateChanged, this, [&loads] { ++loads; });
                QVERIFY(waitUntil([&] { return loads > 0; }));
                disconnect(player.get(), nullptr, this, nullptr);
                heard.clear();
                player->play();
                QVERIFY(hears(u"play"_s));
            }
        }
    }

    void autoPlay()
    {
        open(u"entryId=1&autoPlay=true"_s);
        QVERIFY(hears(u"autoPlay"_s));
        QVERIFY(heard.indexOf(u"play"_s) < heard.indexOf(u"autoPlay"_s));
    }

    void pluginsChoice()
    {
        open(u"entryId=1"_s);
        QVERIFY(hears(u"(ready)"_s));
        for (const auto &[videos, cards] :
             {std::pair(QString(), 0),
              {u"[{"_s, 0},
              {u"[{\"title\":\"A </script> ` ${x} '\"},{\"title\":\"B\",\"videoId\":\"sandbox-3\"}]"_s, 2}}) {
            const auto userInfo = videos.isNull() ? QVariantMap() : QVariantMap{{ZelvanoDataKey, videos}};
            NotificationCenter::defaultCenter().post(
                {SuggestionsDidFetchedNotification, QVariant::fromValue<QObject *>(player.get()), userInfo});
            QVERIFY(flushMainQueue());
            QCOMPARE(inPage(u"document.querySelectorAll('[data-index]').length"_s).toInt(), cards);
        }
        QVariantMap chosen;
        NotificationCenter::defaultCenter().addObserver(this, PluginPlayNotification, [&](const Notification &choice) {
            chosen = choice.userInfo.value(u"params"_s).toMap();
            player->changeMedia(chosen.value(u"videoId"_s).toString());
        });
        inPage(u"document.querySelector('[data-index=\"1\"]').click()"_s);
        QVERIFY(waitUntil([&] { return !chosen.isEmpty(); }));
        NotificationCenter::defaultCenter().removeObserver(this);
        QCOMPARE(chosen.value(u"index"_s).toInt(), 1);
        QVERIFY(hears(u"play"_s));
        QCOMPARE(adapter->videoId(), u"sandbox-3"_s);
    }

    /// A page without a player, or with malformed reports: nothing is reported, and calls to it do nothing.
    void hostilePage()
    {
        const QStringList scripts{
            u""_s,
            u"kHost.mediaDidChange({duration: 'long', currentTime: null, entryId: {}});"
            "kHost.mediaDidChange({videoWidth: -1, videoHeight: [], duration: -1}); kHost.loadStateDidChange('one');"
            "kHost.playbackStateDidChange({}); kHost.playbackStateDidChange(1e30);"_s,
            u"kHost.mediaDidChange(); kHost.mediaDidChange(null); kHost.mediaDidChange(7);"
            "kHost.loadStateDidChange(); kHost.eventDidFire(); kHost.eventDidFire('zelvanoPluginEvent');"_s,
        };
        for (const auto &script : scripts) {
            openPage(pageOf(
                u"<script>new QWebChannel(qt.webChannelTransport, channel => { const kHost = channel.objects.kHost;"
                "%1 kHost.playbackStateDidChange(6); });</script>"_s.arg(script)));
            QVERIFY(hears(u"pause"_s));
            QCOMPARE(heard, QStringList{u"pause"_s});
            player->play();
            player->changeMedia(u"');alert(1)//"_s);
            player->sendNotification(u"x"_s, {});
            bool answered = false;
            player->asyncEvaluate(u"{autoPlay}"_s, u"id"_s, [&](const QVariant &value) { answered = !value.toBool(); });
            QVERIFY(waitUntil([&] { return answered; }));
            QVERIFY(!adapter->duration());
            QCOMPARE(adapter->currentPosition(), 0.0);
            QCOMPARE(adapter->videoSize(), QSizeF(0, 0));
        }
    }

    void unansweredEvaluations()
    {
        openPage(pageOf({}));
        const auto token = std::make_shared<int>();
        for (int i = 0; i < 1000; ++i)
            player->asyncEvaluate(u"{autoPlay}"_s, {}, [token](const QVariant &) {});
        QVERIFY(token.use_count() > 1 && token.use_count() < 100);
    }
};

UI_TEST_MAIN(tst_QtKPViewController)
#include "tst_QtKPViewController.moc"
