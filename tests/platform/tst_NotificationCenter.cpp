#include "MainQueue.h"
#include "NotificationCenter.h"

#include <QStringList>
#include <QTest>
#include <QThread>

#include <thread>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_NotificationCenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_heard.clear(); }

    void removal()
    {
        NotificationCenter center;
        const int other = 0;
        for (const auto name : {"a"_L1, "a"_L1, "b"_L1})
            center.addObserver(this, name, note(name));
        center.addObserver(&other, u"a"_s, note(u"other a"_s));
        center.removeObserver(this, u"a"_s);
        center.post({u"a"_s, {}, {}});
        center.post({u"b"_s, {}, {}});
        const QStringList expected{u"other a"_s, u"b"_s};
        QCOMPARE(m_heard, expected);
        center.removeObserver(this);
        center.post({u"b"_s, {}, {}});
        QCOMPARE(m_heard, expected);
    }

    void changesWhilePosting()
    {
        NotificationCenter center;
        const int first = 0, second = 0, third = 0;
        center.addObserver(&first, u"n"_s, [&](const Notification &) {
            m_heard.append(u"first"_s);
            center.removeObserver(&first);
            center.removeObserver(&second);
            center.addObserver(&first, u"n"_s, note(u"added"_s));
            center.post({u"n"_s, {}, {}}); // Inside the delivery: those that stand now.
            m_heard.append(u"back in first"_s);
        });
        center.addObserver(&second, u"n"_s, note(u"second"_s));
        center.addObserver(&third, u"n"_s, note(u"third"_s));
        center.post({u"n"_s, {}, {}});
        const QStringList expected{u"first"_s, u"third"_s, u"added"_s, u"back in first"_s, u"third"_s};
        QCOMPARE(m_heard, expected);
    }

    void postFromAnotherThread()
    {
        auto &center = NotificationCenter::defaultCenter();
        center.addObserver(this, u"n"_s, [this](const Notification &notification) {
            QVERIFY(MainQueue::isMainThread());
            m_heard.append(notification.userInfo.value(u"key"_s).toString());
        });
        std::thread([&] { center.post({u"n"_s, {}, {{u"key"_s, u"value"_s}}}); }).join();
        QVERIFY(m_heard.isEmpty());
        QTRY_COMPARE(m_heard, QStringList{u"value"_s});
        center.removeObserver(this);
    }

private:
    NotificationCenter::Handler note(const QString &what)
    {
        return [this, what](const Notification &) { m_heard.append(what); };
    }

    QStringList m_heard;
};

QTEST_GUILESS_MAIN(tst_NotificationCenter)
#include "tst_NotificationCenter.moc"
