#include "EngineFixture.h"
#include "RealPlayer.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// An engine gets another player, of any kind after any kind. Only the new one is reported from then on.
class tst_PlayerPairs : public QObject
{
    Q_OBJECT

    HostWindow window;

private Q_SLOTS:
    void initTestCase() { QVERIFY(window.appear()); }

    void pair_data()
    {
        addColumns<QString, QString, QString>({"first", "second", "ending"});
        for (const auto &first : RealPlayer::kinds()) {
            for (const auto &second : RealPlayer::kinds()) {
                for (const auto *ending : {"destroyed", "dismissed", "still playing"}) {
                    QTest::addRow("%s %s, then %s", qPrintable(first), ending, qPrintable(second))
                        << first << second << ending;
                }
            }
        }
    }
    void pair()
    {
        QFETCH(const QString, first);
        QFETCH(const QString, second);
        QFETCH(const QString, ending);
        EngineFixture service;
        service.storeIdentity();
        service.initialize();
        auto &heard = service.listener->heard;
        const auto open = [&](RealPlayer &host, const QString &page) {
            service.engine->setPlayer(host.player, page);
            service.settle();
            return host.load() && host.play() && waitUntil([&] {
                       service.settle();
                       return heard.contains(u"play"_s) || heard.contains(u"autoPlay"_s);
                   });
        };
        auto old = std::make_unique<RealPlayer>(first, window, service.sandbox);
        QVERIFY(open(*old, u"page-1"_s));
        const std::weak_ptr<PlayerSubscriber> adapter = service.engine->playerEventsHandler()->currentSubscriber();
        const auto view = service.engine->state().viewUUID;
        if (ending == "destroyed"_L1) {
            old.reset();
        } else if (ending == "dismissed"_L1) {
            service.engine->dismissZelvano();
            service.engine->addListener(service.listener);
        }
        heard.clear();
        RealPlayer next(second, window, service.sandbox);
        QVERIFY(open(next, u"page-2"_s));
        QVERIFY(adapter.expired());
        QVERIFY(waitUntil([&] {
            service.settle();
            return service.engine->state().viewUUID != view;
        }));

        heard.clear();
        if (old)
            QVERIFY(old->pause());
        QVERIFY(flushMainQueue());
        service.advance(1s);
        QCOMPARE(heard.join(u' '), QString());
        QVERIFY(next.pause());
        QVERIFY(waitUntil([&] {
            service.advance(1s);
            return heard.contains(u"pause"_s);
        }));
        QCOMPARE(heard.count(u"pause"_s), 1);
    }
};

UI_TEST_MAIN(tst_PlayerPairs)
#include "tst_PlayerPairs.moc"
