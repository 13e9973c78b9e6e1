#include "Columns.h"
#include "LogCollector.h"
#include <ZelvanoUI/ZVRecommendation.h>

#include <QJsonDocument>

#include <thread>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_ZVRecommendation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wrongTypes()
    {
        // -1: the answer has no such list. The last number counts log lines: what is dropped is logged once.
        const std::tuple<const char *, int, int, QStringList, int> cases[] = {
            {R"({"status":200})", 0, -1, {}, 0},
            {R"({"data":"x"})", 0, -1, {}, 0},
            {R"({"data":{"videos":{"0":{}}}})", 0, -1, {}, 0},
            {R"({"data":{"videos":[]}})", 0, 0, {}, 0},
            {R"({"data":{"videos":[1,null,"x",[],{"category":"A"}]}})", 1, 1, {u"A"_s}, 1},
            {R"({"data":{"videos":[{"category":7},{},{"category":""}]}})", 3, 3, {u""_s}, 1},
        };
        for (const auto &[answer, videos, raw, categories, lines] : cases) {
            const Case current(answer);
            const LogCollector log;
            const auto recommendation = record(answer);
            for (int time = 0; time < 2; ++time) {
                QCOMPARE(static_cast<int>(recommendation->videoList().size()), videos);
                QCOMPARE(recommendation->categories(), categories);
            }
            QCOMPARE(recommendation->firstVideo() != nullptr, videos > 0);
            const auto array = recommendation->videosArray();
            QCOMPARE(array ? static_cast<int>(array->size()) : -1, raw);
            QCOMPARE(static_cast<int>(log.lines().size()), lines);
            QVERIFY(!recommendation->videosForCategory(u"NONE"_s));
        }
    }

    void topLevelValues()
    {
        QVERIFY(!record("{}"));
        const auto top = record(R"({"viewUUID":"v","status":"200","data":{"viewUUID":"other","status":1}})");
        QCOMPARE(top->viewUUID(), u"v"_s);
        QCOMPARE(top->status(), QJsonValue(u"200"_s));
        const auto inside = record(R"({"data":{"viewUUID":"other","status":1}})");
        QVERIFY(inside->viewUUID().isNull());
        QVERIFY(inside->status().isUndefined());
    }

    void videoValues()
    {
        // Services match URLs by text.
        const auto text = QByteArray(R"({"title":"t","videoId":"i","costumerVideoId":"c","category":"k",)"
                                     R"("url":"http://A.Example/%7Eu","imageUrl":"x:i","stripUrl":"x:s",)"
                                     R"("durationSec":1,"pubDate":2,"value":3})");
        const ZVVideoParams video(QJsonDocument::fromJson(text).object());
        const QStringList texts{video.title(), video.videoId(),  video.costumerVideoId(), video.category(),
                                video.url(),   video.imageUrl(), video.stripUrl()};
        QCOMPARE(texts.join(u' '), u"t i c k http://A.Example/%7Eu x:i x:s"_s);
        QCOMPARE((QJsonArray{video.durationSec(), video.pubDate(), video.percentValue()}), (QJsonArray{1, 2, 3}));
        const auto bad = u"http://[bad"_s;
        const ZVVideoParams other({{"url"_L1, bad}, {"imageUrl"_L1, bad}, {"stripUrl"_L1, bad}});
        QVERIFY(other.url().isNull() && other.imageUrl().isNull() && other.stripUrl().isNull());
    }

    void categories()
    {
        const auto recommendation = record(R"({"data":{"videos":[{"title":"1","category":"MOSTVIEWED"},
            {"title":"2","category":"FORYOU"},{"title":"3","category":"MOSTVIEWED"}]}})");
        QVERIFY(recommendation->fetchedRecommendations().empty());
        QCOMPARE(titles(recommendation->videosForCategory(u"MOSTVIEWED"_s)), (QStringList{u"1"_s, u"3"_s}));
        QCOMPARE(titles(recommendation->videosForCategory(u"FORYOU"_s)), QStringList{u"2"_s});
        QVERIFY(!recommendation->videosForCategory(u"foryou"_s));
        const auto first = recommendation->categories();
        QCOMPARE(first.size(), 2);
        QCOMPARE(recommendation->categories(), first);
        QCOMPARE(recommendation->fetchedRecommendations().size(), 2U); // Not grouped again.
        QVERIFY(recommendation->videosForCategory(u"FORYOU"_s)->front() != recommendation->videoList().at(1));
    }

    void replacedLists()
    {
        const auto recommendation = record(R"({"data":{"videos":[{"title":"1","category":"A"},{"title":"2"}]}})");
        recommendation->setVideoList(ZVVideoList());
        recommendation->setVideosArray(QJsonArray{1});
        QVERIFY(!recommendation->firstVideo());
        QVERIFY(recommendation->videoList().empty() && recommendation->videosArray()->isEmpty());
        QCOMPARE(recommendation->categories(), QStringList{u"A"_s}); // Out of the answer.
        recommendation->setFetchedRecommendations({{u"A"_s, {}}});
        QVERIFY(recommendation->videosForCategory(u"A"_s)->empty());
        recommendation->setVideoList(std::nullopt);
        recommendation->setVideosArray(std::nullopt);
        QCOMPARE(titles(recommendation->videoList()), (QStringList{u"1"_s, u"2"_s}));
        QCOMPARE(recommendation->videosArray()->size(), 2);
    }

    /// A small compressed answer may hold millions.
    void tooManyVideos()
    {
        for (const auto &[count, read, lines] : {std::tuple(10000, 10000, 0), {10001, 10000, 1}}) {
            const LogCollector log;
            const auto first = recordOf(count);
            const auto copy = recommendations(first->recommendation()); // Logs no second line.
            for (const auto &recommendation : {first, copy}) {
                QCOMPARE(recommendation->firstVideo()->title(), u"0"_s);
                QCOMPARE(recommendation->videosForCategory(u"A"_s)->size(), std::size_t(read));
                QCOMPARE(recommendation->videosArray()->size(), read);
                QCOMPARE(recommendation->videoList().back()->title(), QString::number(read - 1));
            }
            QCOMPARE(log.lines().size(), lines);
        }
    }

    void manyVideosFromManyThreads()
    {
        constexpr int count = 1000;
        const auto recommendation = recordOf(count);
        std::vector<std::jthread> threads;
        std::atomic<int> wrong = 0;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                const auto list = recommendation->videoList();
                wrong += list.size() != count || recommendation->videosForCategory(u"A"_s)->size() != count;
                for (int i = 0; i < count; ++i) // The service's order on every thread.
                    wrong += list[std::size_t(i)]->title() != QString::number(i);
            });
        }
        threads.clear(); // Waits for them.
        QCOMPARE(wrong.load(), 0);
    }

private:
    static std::shared_ptr<ZVRecommendation> recordOf(int count)
    {
        QJsonArray videos;
        for (int i = 0; i < count; ++i)
            videos.append(QJsonObject{{"title"_L1, QString::number(i)}, {"category"_L1, u"A"_s}});
        return recommendations({{"data"_L1, QJsonObject{{"videos"_L1, videos}}}});
    }
    static std::shared_ptr<ZVRecommendation> record(const QByteArray &answer)
    {
        return recommendations(QJsonDocument::fromJson(answer).object());
    }
    static QStringList titles(const std::optional<ZVVideoList> &list)
    {
        QStringList titles;
        for (const auto &video : list.value_or(ZVVideoList()))
            titles.append(video->title());
        return titles;
    }
};

QTEST_GUILESS_MAIN(tst_ZVRecommendation)
#include "tst_ZVRecommendation.moc"
