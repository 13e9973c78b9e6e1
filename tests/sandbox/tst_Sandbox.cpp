#include "HttpLoad.h"
#include <ZelvanoUI/Sandbox.h>

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;
using namespace zelvano::sandbox;

/// The service as seen by clients. The library's own tests cover its faults.
class tst_Sandbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_sandbox.start()); }

    void scenarios()
    {
        const QList<int> well(8, 200);
        // The statuses of the calls below, 0 without JSON; then the number of videos for the second ready event, which
        // requests 5, or -1 without a list.
        const std::tuple<const char *, QList<int>, int> cases[] = {
            {"ordinary", well, 5},
            {"empty", well, 0},
            {"one-video", well, 1},
            {"thousand-videos", well, 1000},
            {"error-statuses", {503, 500, 404, 404, 404, 404, 404, 401}, -1},
            {"channel-lost", {200, 200, 406, 200, 406, 200, 200, 200}, 5},
            {"garbage", QList<int>(8, 0), -1},
        };
        for (const auto &[name, statuses, videos] : cases) { // Each replaces the one before.
            const Case current(name);
            m_sandbox.setScenario(*Sandbox::scenarioByName(QLatin1StringView(name)));
            QList<int> answered;
            QJsonValue list;
            for (const auto &[path, type] : {std::pair("/users/id", u""_s),
                                             {"/channels/init/zelvano", u""_s},
                                             {"/events", u"page"_s},
                                             {"/events", u"page"_s},
                                             {"/events", u"ready"_s},
                                             {"/events", u"ready"_s},
                                             {"/events", u"play"_s},
                                             {"/keepalive", u""_s}}) {
                const auto answer = post(path, {{u"userId"_s, u"user"_s}, {u"type"_s, type}, {u"size"_s, 5}});
                answered.append(answer["status"_L1].toInt());
                if (type == "ready"_L1)
                    list = answer["data"_L1]["videos"_L1];
            }
            QCOMPARE(answered, statuses);
            QCOMPARE(list.isArray() ? static_cast<int>(list.toArray().size()) : -1, videos);
        }
    }

    // A server on all addresses would also answer at the second one.
    void loopbackOnly()
    {
        auto elsewhere = m_sandbox.url(u"/layout/"_s);
        QCOMPARE(HttpLoad(httpGet(elsewhere)).resume().result().status, 200);
        elsewhere.setHost(u"127.0.0.2"_s);
        QVERIFY(HttpLoad(httpGet(elsewhere)).resume().result().error);
    }

private:
    QJsonObject post(const char *path, const QJsonObject &body) const
    {
        const auto text = QJsonDocument(body).toJson();
        auto request = httpPost(m_sandbox.url(QLatin1StringView(path)), text);
        request.setHeader("x-api-key", "key");
        const auto answer = HttpLoad(std::move(request)).resume().result();
        return QJsonDocument::fromJson(answer.data).object();
    }

    Sandbox m_sandbox;
};

QTEST_GUILESS_MAIN(tst_Sandbox)
#include "tst_Sandbox.moc"
