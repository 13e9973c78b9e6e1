#include "Columns.h"
#include "FakePlayer.h"
#include "MainQueue.h"
#include "MainQueueTestClock.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

class tst_AVPlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        MainQueueTestClock::start();
        m_start = MainQueueTestClock::now();
        m_player = std::make_shared<FakePlayer>();
    }

    void cleanup() { MainQueueTestClock::stop(); }

    void ticks()
    {
        m_player->addPeriodicTimeObserver(200ms, note(u"a"_s));
        QCOMPARE(advance(1s), QStringList());
        m_player->jumpTo(7);
        QCOMPARE(advance(0ms), QStringList{u"a 7@1000"_s}); // At once, also while it does not play.

        m_player->play();
        QCOMPARE(advance(199ms), QStringList());
        QCOMPARE(advance(201ms), QStringList({u"a 7@1200"_s, u"a 7@1400"_s}));
        const auto token = m_player->addPeriodicTimeObserver(100ms, note(u"b"_s)); // Another one, while it plays.
        QCOMPARE(advance(200ms), QStringList({u"b 7@1500"_s, u"a 7@1600"_s, u"b 7@1600"_s}));
        m_player->setRate(2); // The interval restarts, with one tick for each.
        m_player->removeTimeObserver(token);
        m_player->removeTimeObserver(token);
        m_player->jumpTo(30);
        QCOMPARE(advance(399ms), QStringList({u"a 30@1600"_s, u"a 30@1800"_s}));
        m_player->pause();
        QCOMPARE(advance(1h), QStringList());
    }

    void itemIsCurrentBeforeItLoads()
    {
        struct LoadingPlayer : FakePlayer
        {
            QStringList steps;
            void loadItem(const std::shared_ptr<AVPlayerItem> &) override { steps.append(u"load "_s + url()); }
        } player;
        const auto replace = [&](const QString &url) {
            player.replaceCurrentItemWithPlayerItem(AVPlayerItem::create(AVURLAsset(QUrl(url))));
        };
        connect(&player, &AVPlayer::currentItemChanged, this, [&] {
            player.steps.append(u"current "_s + player.url());
            if (player.url() == "x:refused"_L1)
                replace(u"x:instead"_s);
        });
        replace(u"x:1"_s);
        player.replaceCurrentItemWithPlayerItem(nullptr);
        replace(u"x:refused"_s); // Never loaded: another item is current by then.
        QCOMPARE(player.steps.join(u", "_s), u"current x:1, load x:1, current , load , current x:refused, "
                                             "current x:instead, load x:instead"_s);
    }

    /// An observer removes itself and the next one, or ends the player.
    void observerEndsObservers()
    {
        for (const bool byJump : {false, true}) {
            for (const bool endsPlayer : {false, true}) {
                std::shared_ptr<AVPlayer::TimeObserverToken> first, second;
                first = m_player->addPeriodicTimeObserver(200ms, [&](double) {
                    m_ticks.append(u"first"_s);
                    m_player->removeTimeObserver(first);
                    m_player->removeTimeObserver(second);
                    if (endsPlayer)
                        m_player.reset();
                });
                second = m_player->addPeriodicTimeObserver(200ms, note(u"second"_s));
                m_player->addPeriodicTimeObserver(200ms, note(u"last"_s));
                if (byJump)
                    m_player->jumpTo(1);
                else
                    m_player->play();
                QStringList expected{u"first"_s, byJump ? u"last 1@0"_s : u"last 0@200"_s};
                QCOMPARE(advance(399ms), endsPlayer ? QStringList{u"first"_s} : expected);
                init();
            }
        }
    }

private:
    AVPlayer::TimeObserver note(const QString &what)
    {
        return [this, what](double seconds) {
            const auto moment = (MainQueueTestClock::now() - m_start).count();
            m_ticks.append(u"%1 %2@%3"_s.arg(what).arg(seconds).arg(moment));
        };
    }
    QStringList advance(std::chrono::milliseconds time)
    {
        MainQueueTestClock::advance(time);
        return std::exchange(m_ticks, {});
    }

    std::shared_ptr<FakePlayer> m_player;
    MainQueue::Duration m_start{};
    QStringList m_ticks;
};

QTEST_GUILESS_MAIN(tst_AVPlayer)
#include "tst_AVPlayer.moc"
