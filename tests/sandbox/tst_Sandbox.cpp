#include "Sandbox.h"
#include "UrlLoad.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zelvano::sandbox;

/// The service as its callers see it. What it does when it is told to misbehave, the library's own tests live by.
class tst_Sandbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        QVERIFY(m_sandbox->start());
    }
    void cleanup() { m_sandbox.reset(); }

    void pages()
    {
        for (const char *path : {"/layout/", "/kaltura/?entryId=3&autoPlay=true", "/kaltura/zelvano-plugin.js"}) {
            const auto page = get(path);
            QCOMPARE(page.status(), 200);
            QVERIFY(!page.data.isEmpty());
        }
        QCOMPARE(get("/kaltura/missing.js").status(), 404);
    }

    void scenarios_data()
    {
        using Statuses = QList<int>;
        // Of the calls in scenarios(); 0: no JSON.
        // To the second ready event, which asks for 5; -1: none are told of.
        addColumns<Statuses, int>({"statuses", "videos"});

        const Statuses well(8, 200);
        QTest::newRow("ordinary") << well << 5;
        QTest::newRow("empty") << well << 0;
        QTest::newRow("one-video") << well << 1;
        QTest::newRow("thousand-videos") << well << 1000;
        QTest::newRow("error-statuses") << Statuses{503, 500, 404, 404, 404, 404, 404, 401} << -1;
        QTest::newRow("channel-lost") << Statuses{200, 200, 406, 200, 406, 200, 200, 200} << 5;
        QTest::newRow("garbage") << Statuses(8, 0) << -1;
        QTest::newRow("missing-pictures") << well << 5;
        QTest::newRow("long-titles") << well << 5;
        QTest::newRow("right-to-left-titles") << well << 5;
    }

    void scenarios()
    {
        QFETCH(QList<int>, statuses);
        QFETCH(int, videos);

        // What the scenario before left behind is gone.
        m_sandbox->setScenario(Scenario::Garbage);
        m_sandbox->setScenario(*Sandbox::scenarioByName(QString::fromLatin1(QTest::currentDataTag())));
        QList<int> answered;
        const auto call = [&](const char *path, const QString &type = {}, int size = 0) {
            const auto answer = post(path, {{u"userId"_s, u"user"_s}, {u"type"_s, type}, {u"size"_s, size}});
            answered.append(answer["status"_L1].toInt());
            return answer;
        };
        call("/users/id");
        call("/channels/init/zelvano");
        call("/events", u"page"_s);
        call("/events", u"page"_s);
        call("/events", u"ready"_s);
        const QJsonValue list = call("/events", u"ready"_s, 5)["data"_L1]["videos"_L1];
        call("/events", u"play"_s);
        call("/keepalive");
        QCOMPARE(answered, statuses);
        QCOMPARE(list.isArray() ? static_cast<int>(list.toArray().size()) : -1, videos);
        QCOMPARE(get("/media/1.mp4").status(), 200);
    }

    // A server on all addresses would answer at the second one, too.
    void loopbackOnly()
    {
        auto elsewhere = m_sandbox->url(u"/layout/"_s);
        QCOMPARE(UrlLoad(urlGet(elsewhere)).resume().result().status(), 200);
        elsewhere.setHost(u"127.0.0.2"_s);
        QVERIFY(UrlLoad(urlGet(elsewhere)).resume().result().error);
    }

private:
    UrlResult get(const char *path) const
    {
        return UrlLoad(urlGet(m_sandbox->url(QLatin1StringView(path)))).resume().result();
    }
    QJsonObject post(const char *path, const QJsonObject &body) const
    {
        const auto text = QJsonDocument(body).toJson();
        auto request = urlPost(m_sandbox->url(QLatin1StringView(path)), text);
        request.setHeader("x-api-key", "key");
        const auto answer = UrlLoad(std::move(request)).resume().result();
        return QJsonDocument::fromJson(answer.data).object();
    }

    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(tst_Sandbox)
#include "tst_Sandbox.moc"
