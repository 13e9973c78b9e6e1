#pragma once

#include "Columns.h"
#include "FakePlayer.h"
#include "LogCollector.h"
#include "MainQueueTestClock.h"
#include <ZelvanoUI/PlayerEvents.h>

#include <QMap>
#include <QRegularExpression>

#include <thread>

/// A test of an adapter on the test clock. Each step of the test is an action of the player.
template<class Adapter, class PlayerType> class AdapterTest : public QObject
{
protected:
    using Actions = QMap<QString, std::function<void(const QString &)>>;

    /// Creates a player, alone or in its view controller, with an adapter.
    virtual void create(bool inController) = 0;
    void begin()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        zelvano::MainQueueTestClock::start();
        create(false);
    }
    void watch(const std::shared_ptr<QObject> &host)
    {
        m_engine = std::make_shared<RecordingSubscription>();
        m_adapter = Adapter::create(host);
        m_adapter->setObserver(m_engine);
    }

    /// Performs steps such as "play, wait 500".
    void perform(const QString &steps)
    {
        const LogCollector log;
        for (const auto &step : steps.split(QStringLiteral(", "), Qt::SkipEmptyParts)) {
            const auto action = m_actions.value(step.section(u' ', 0, 0));
            QVERIFY2(action, qPrintable(step));
            action(step.section(u' ', 1));
        }
    }

    static void addStepColumns()
    {
        // Events of the earlier steps do not count.
        addColumns<bool, QString, QString, QString>({"inController", "before", "steps", "heard"});
    }
    void row(const char *name, const QByteArray &before, const QByteArray &steps, const QByteArray &heard)
    {
        for (const bool inController : m_hosts) {
            QTest::addRow("%s%s", name, inController ? " (controller)" : "")
                << inController << QString::fromLatin1(before) << QString::fromLatin1(steps)
                << QString::fromLatin1(heard);
        }
    }
    void performRow()
    {
        QFETCH(bool, inController);
        QFETCH(QString, before);
        QFETCH(QString, steps);
        create(inController);
        perform(before);
        m_engine->take();
        perform(steps);
        QTEST(m_engine->take().join(QStringLiteral(", ")), "heard");
        if (m_engine->last)
            QCOMPARE(m_engine->last, m_adapter);
    }

    /// The host releases the adapter inside the event of each step.
    void endInside(const QString &before, const QStringList &steps)
    {
        for (const auto &step : steps) {
            create(true);
            perform(before);
            m_engine->onCall = [this](const QString &) {
                m_engine->last.reset();
                m_adapter.reset();
            };
            perform(step);
            QVERIFY2(!m_adapter, qPrintable(step));
        }
    }

    void setNextVideos(const QString &before)
    {
        const auto good = QStringLiteral("http://CDN.Example.com/%7E2%20b.mp4?x=%C3%A4"), stays = QStringLiteral("x:1");
        const auto given = QStringLiteral("video-url: "), bad = QStringLiteral("http://[bad");
        const auto kept = QStringLiteral("Error: the next video has no valid URL, the video stays");
        const auto refused = QStringLiteral("pipe:0");
        const auto refusal =
            QStringLiteral("Error: the player does not accept the next video's address, the video stays");
        const std::tuple<QString, QString, QStringList> cases[] = {
            {good, good, {given + good}},
            {refused, stays, {given + refused, refusal}},
            {QString(), stays, {}},
            {QStringLiteral(""), stays, {given, kept}},
            {bad, stays, {given + bad, kept}},
        };
        for (const auto &row : cases) {
            const Case current(std::get<0>(row).toLatin1());
            create(false);
            perform(before);
            m_engine->take();
            const LogCollector log;
            std::thread([&] { m_adapter->setNextVideo(std::get<0>(row)); }).join();
            QCOMPARE(m_engine->take(), QStringList()); // Later, on the main queue.
            zelvano::MainQueueTestClock::advance(std::chrono::milliseconds(0));
            QVERIFY(m_engine->take().contains(zelvano::PlayerEvent::Play));
            QCOMPARE(log.lines(), std::get<2>(row));
            QCOMPARE(m_adapter->videoId(), std::get<1>(row));
        }
    }

    std::shared_ptr<PlayerType> m_player;
    std::shared_ptr<Adapter> m_adapter;
    std::shared_ptr<RecordingSubscription> m_engine;
    QList<bool> m_hosts{false, true}; ///< Whether the player is in a view controller.
    Actions m_actions{
        {QStringLiteral("wait"),
         [](auto &how) { zelvano::MainQueueTestClock::advance(std::chrono::milliseconds(how.toInt())); }},
        {QStringLiteral("click"), [](auto &how) { click(QUrl(how)); }},
        {QStringLiteral("next"), [this](auto &how) { m_adapter->setNextVideo(how); }},
        {QStringLiteral("dismiss"), [this](auto &) { m_adapter->dismissSubscriber(); }},
        {QStringLiteral("drop"), [this](auto &) { drop(); }},
    };

    static void click(const QVariant &object)
    {
        zelvano::NotificationCenter::defaultCenter().post({zelvano::DidSelecteRecommendationNotification, object, {}});
    }

private:
    /// No other reference exists, neither in the player nor in pending tasks.
    void drop()
    {
        m_engine->last.reset();
        const std::weak_ptr<Adapter> watched = std::exchange(m_adapter, nullptr);
        QVERIFY(watched.expired());
    }
};
