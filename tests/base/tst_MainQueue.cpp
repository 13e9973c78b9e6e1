#include "MainQueueTestClock.h"
#include <ZelvanoUI/NotificationCenter.h>

#include <QEventLoop>
#include <QStringList>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <map>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

namespace {
bool ranBeforeAnyApplication = false;
bool ranForFirstApplication = false;
bool wasMainThread = false;
bool wasOtherThreadMain = true;
} // namespace

/// The main queue and the notification centre.
class tst_MainQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_ran.clear(); }
    void cleanup() { MainQueueTestClock::stop(); }

    /// main() posted a task on another thread before any application, and one under an application whose event loop
    /// never ran. The runs wait for no later task.
    void applicationsOfOneProcess()
    {
        QTRY_VERIFY(ranBeforeAnyApplication && ranForFirstApplication);
        QVERIFY(wasMainThread);
        QVERIFY(!wasOtherThreadMain);
    }

    void delayedTasksRunAtTheirMoment()
    {
        MainQueueTestClock::start();
        const auto start = MainQueueTestClock::now();
        m_queue.performAfterDelay(this, 300ms, noteMoment(u"c"_s, start));
        m_queue.performAfterDelay(this, 100ms, [this, start] {
            noteMoment(u"a"_s, start)();
            m_queue.post(noteMoment(u"posted by a"_s, start));
            m_queue.performAfterDelay(this, 50ms, noteMoment(u"a+50"_s, start));
            m_queue.performAfterDelay(this, 0ms, noteMoment(u"a+0"_s, start));
        });
        m_queue.performAfterDelay(nullptr, 300ms, noteMoment(u"d, as late as c"_s, start));
        m_queue.performAfterDelay(this, -5ms, noteMoment(u"negative"_s, start));
        m_queue.performAfterDelay(this, 301ms, noteMoment(u"late"_s, start));

        MainQueueTestClock::advance(99ms);
        QCOMPARE(m_ran, QStringList{u"negative@0"_s});
        MainQueueTestClock::advance(201ms);
        QTest::qWait(5); // Real time does not move the test clock.
        QCOMPARE(MainQueueTestClock::now() - start, 300ms);
        QCOMPARE(m_ran.join(u", "_s), u"negative@0, a@100, posted by a@100, a+0@100, a+50@150, c@300, "
                                      "d, as late as c@300"_s);
        MainQueueTestClock::advance(1ms);
        QCOMPARE(m_ran.last(), u"late@301"_s);
    }

    void cancelFromWithinATask()
    {
        MainQueueTestClock::start();
        const int own = 0, other = 0;
        m_queue.performAfterDelay(&own, 10ms, [&] {
            m_ran.append(u"first"_s);
            m_queue.cancelPreviousPerformRequests(&own); // The one that is due at the same moment, too; not itself.
            m_queue.performAfterDelay(&own, 10ms, note(u"scheduled afterwards"_s));
        });
        m_queue.performAfterDelay(&own, 10ms, note(u"cancelled"_s));
        m_queue.performAfterDelay(&own, 30ms, note(u"cancelled"_s));
        m_queue.performAfterDelay(&other, 10ms, note(u"of another target"_s));
        MainQueueTestClock::advance(1h);
        QCOMPARE(m_ran.join(u", "_s), u"first, of another target, scheduled afterwards"_s);
    }

    /// The destructor of an object that a task owns may call the queue: after a run, and after a cancellation.
    void ownedByATask()
    {
        MainQueueTestClock::start();
        const auto owned = [this](const QString &what) {
            return std::shared_ptr<void>(nullptr, [this, what](void *) {
                m_queue.cancelPreviousPerformRequests(&m_ran);
                m_ran.append(what);
            });
        };
        m_queue.post([o = owned(u"posted"_s)] {});
        m_queue.performAfterDelay(this, 0ms, [o = owned(u"delayed"_s)] {});
        MainQueueTestClock::advance(0ms);
        m_queue.performAfterDelay(this, 10ms, [o = owned(u"cancelled"_s)] {});
        m_queue.cancelPreviousPerformRequests(this);
        QCOMPARE(m_ran.join(u", "_s), u"posted, delayed, cancelled"_s);
    }

    void realClockKeepsTheOrder()
    {
        const auto start = MainQueueTestClock::now();
        m_queue.performAfterDelay(this, 40ms, note(u"40"_s));
        m_queue.performAfterDelay(this, 10ms, note(u"10"_s));
        m_queue.performAfterDelay(this, 1h, note(u"never"_s));
        m_queue.performAfterDelay(this, 0ms, note(u"0"_s));
        QTRY_COMPARE(m_ran.join(u", "_s), u"0, 10, 40"_s);
        QVERIFY(MainQueueTestClock::now() - start >= 40ms);
        m_queue.cancelPreviousPerformRequests(this);
    }

    /// Like a listener that opens a modal dialog: a posted task, or a delayed one.
    void nestedEventLoop()
    {
        for (const bool isPosted : {true, false}) {
            m_ran.clear();
            QEventLoop loop;
            QTimer::singleShot(5000, &loop, &QEventLoop::quit);
            const auto nest = [&] {
                m_ran.append(u"nested"_s);
                loop.exec();
                m_ran.append(u"back"_s);
            };
            if (isPosted)
                m_queue.post(nest);
            else
                m_queue.performAfterDelay(this, 0ms, nest);
            m_queue.performAfterDelay(this, 20ms, note(u"20"_s));
            m_queue.performAfterDelay(this, 40ms, [&] { loop.quit(); });
            m_queue.performAfterDelay(this, 0ms, note(u"0"_s));
            if (isPosted) {
                m_queue.post(note(u"a"_s));
                m_queue.post(note(u"b"_s));
            }
            const auto expected = isPosted ? u"nested, a, b, 0, 20, back"_s : u"nested, 0, 20, back"_s;
            QTRY_COMPARE(m_ran.join(u", "_s), expected);
        }
    }

    void repetitionDoesNotStarveTheEventLoop()
    {
        for (const bool posts : {true, false}) {
            constexpr int enough = 100000;
            int runs = 0;
            bool otherRan = false;
            std::function<void()> repeat = [&] {
                if (otherRan || ++runs == enough)
                    return;
                if (posts)
                    m_queue.post(repeat);
                else
                    m_queue.performAfterDelay(this, 0ms, repeat);
            };
            repeat();
            QTimer::singleShot(0, this, [&] { otherRan = true; });
            QTRY_VERIFY(otherRan);
            QVERIFY2(runs > 1 && runs < enough, qPrintable(QString::number(runs)));
            m_queue.cancelPreviousPerformRequests(this);
            QCoreApplication::processEvents(); // The last one that was posted.
        }
    }

    /// Posted tasks keep their order, and so do delayed ones.
    void postsFromThreads()
    {
        constexpr int each = 1000;
        std::map<std::pair<int, bool>, QList<int>> ran;
        std::atomic<int> onOtherThreads = 0;
        const auto fill = [&](int thread) {
            for (int i = 0; i < each; ++i) {
                m_queue.post([&ran, thread, i] { ran[{thread, false}].append(i); });
                m_queue.performAfterDelay(&ran, 0ms, [&, thread, i] {
                    ran[{thread, true}].append(i);
                    onOtherThreads += MainQueue::isMainThread() ? 0 : 1;
                });
            }
        };
        std::thread first(fill, 1), second(fill, 2);
        const auto isFull = [](const auto &entry) { return entry.second.size() == each; };
        QTRY_VERIFY(ran.size() == 4 && std::ranges::all_of(ran, isFull));
        first.join();
        second.join();
        QCOMPARE(onOtherThreads.load(), 0);
        for (const auto &[what, list] : ran)
            QVERIFY(std::ranges::is_sorted(list));
    }

    void observersThatChangeWhilePosting()
    {
        NotificationCenter center;
        const int first = 0, second = 0, third = 0;
        for (const auto name : {"n"_L1, "n"_L1, "other"_L1})
            center.addObserver(this, name, hear(name));
        center.removeObserver(this, u"n"_s); // Both, and by that name alone.
        center.addObserver(&first, u"n"_s, [&](const Notification &) {
            m_ran.append(u"first"_s);
            center.removeObserver(&first);
            center.removeObserver(&second);
            center.addObserver(&first, u"n"_s, hear(u"added"_s));
            center.post({u"n"_s, {}, {}}); // Inside the delivery: those that stand now.
            m_ran.append(u"back in first"_s);
        });
        center.addObserver(&second, u"n"_s, hear(u"second"_s));
        center.addObserver(&third, u"n"_s, hear(u"third"_s));
        center.addObserver(&third, {}, hear(u"any"_s)); // By every name, and removed by no single one.
        center.removeObserver(&third, u"other"_s);
        for (const auto &name : {u"n"_s, u"other"_s})
            center.post({name, {}, {}});
        center.removeObserver(&third);
        center.post({u"n"_s, {}, {}});
        QCOMPARE(m_ran.join(u", "_s), u"first, third, any, added, back in first, third, any, other, any, added"_s);
    }

    void observerThatTakesAnotherAway()
    {
        struct Observer
        {
            ~Observer() { NotificationCenter::defaultCenter().removeObserver(this); }
        };
        auto &center = NotificationCenter::defaultCenter();
        auto owned = std::make_unique<Observer>();
        center.addObserver(owned.get(), u"a"_s, hear(u"owned"_s));
        center.addObserver(this, u"a"_s, [owner = std::shared_ptr<Observer>(std::move(owned))](auto &&) {});
        center.addObserver(&m_ran, u"a"_s, hear(u"other"_s));
        center.removeObserver(this);
        center.post({u"a"_s, {}, {}});
        center.removeObserver(&m_ran);
        QCOMPARE(m_ran, QStringList{u"other"_s});
    }

    void notificationFromAnotherThread()
    {
        auto &center = NotificationCenter::defaultCenter();
        center.addObserver(this, u"n"_s, [this](const Notification &notification) {
            QVERIFY(MainQueue::isMainThread());
            m_ran.append(notification.userInfo.value(u"key"_s).toString());
        });
        std::thread([&] { center.post({u"n"_s, {}, {{u"key"_s, u"value"_s}}}); }).join();
        QVERIFY(m_ran.isEmpty());
        QTRY_COMPARE(m_ran, QStringList{u"value"_s});
        center.removeObserver(this);
    }

private:
    MainQueue::Task note(const QString &what)
    {
        return [this, what] { m_ran.append(what); };
    }
    NotificationCenter::Handler hear(const QString &what)
    {
        return [this, what](const Notification &) { m_ran.append(what); };
    }
    MainQueue::Task noteMoment(const QString &what, MainQueue::Duration start)
    {
        return [this, what, start] {
            m_ran.append(u"%1@%2"_s.arg(what).arg((MainQueueTestClock::now() - start).count()));
        };
    }

    MainQueue &m_queue = MainQueue::shared();
    QStringList m_ran;
};

int main(int argc, char **argv)
{
    wasMainThread = MainQueue::isMainThread();
    std::thread([] { // As the first completion of an engine that started before the application object.
        wasOtherThreadMain = MainQueue::isMainThread();
        MainQueue::shared().post([] { ranBeforeAnyApplication = MainQueue::isMainThread(); });
    })
        .join();
    {
        const QCoreApplication first(argc, argv);
        MainQueue::shared().post([] { ranForFirstApplication = true; });
    }
    const QCoreApplication second(argc, argv);
    tst_MainQueue test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_MainQueue.moc"
