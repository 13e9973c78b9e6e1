#include "HttpLoad.h"
#include "OwnVideos.h"
#include <ZelvanoUI/Sandbox.h>

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

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

    // The first run reads each file, the second only those that it cannot play.
    void ownVideos()
    {
        const QTemporaryDir folder;
        qputenv("XDG_CACHE_HOME", QFile::encodeName(folder.filePath(u"cache"_s)));
        const QDir own(folder.filePath(u"own"_s));
        const auto clip = folder.filePath(u"clip.mkv"_s);
        QVERIFY(makeClip(clip, 2));
        const QStringList played{u"-dash.webm"_s, u"a/Episode 2.mkv"_s, u"Städte/b/日本語.mp4"_s, u"a/Episode 10.mp4"_s,
                                 u"Städte/it's \"100% #1?\".MKV"_s};
        for (const auto &name : played + QStringList{u".hidden.mkv"_s, u".hidden/film.mkv"_s, u"a/notes.txt"_s})
            QVERIFY(copyTo(own.filePath(name), clip));
        QVERIFY(QFile::link(clip, own.filePath(u"outside.mkv"_s)));
        QVERIFY(QFile::copy(clip, own.filePath(u"broken.mkv"_s)) && QFile::resize(own.filePath(u"broken.mkv"_s), 99));
        // ffmpeg would read it, as it would read a list of other files.
        QVERIFY(QImage(160, 90, QImage::Format_RGB32).save(own.filePath(u"picture.mp4"_s), "PNG"));

        for (const int total : {7, 2}) {
            Sandbox sandbox;
            std::mutex mutex;
            QStringList skipped;
            int reported = 0;
            QCOMPARE(sandbox.setVideos(own.path(),
                                       [&](const VideoProgress &progress) {
                                           const std::lock_guard lock(mutex);
                                           reported = std::max(reported, progress.total);
                                           if (!progress.skipped.isNull())
                                               skipped.append(progress.skipped.section(u':', 0, 0));
                                       }),
                     QString());
            QVERIFY(sandbox.start());
            skipped.sort();
            QCOMPARE(skipped, QStringList({u"broken.mkv"_s, u"outside.mkv"_s, u"picture.mp4"_s}));
            QCOMPARE(reported, total);
            checkOwnVideos(sandbox, played, clip);
        }
    }

    void ownVideosThatAreNone()
    {
        const QTemporaryDir folder;
        for (const auto &path : {u""_s, folder.filePath(u"missing"_s), folder.path()}) {
            const auto error = m_sandbox.setVideos(path);
            QVERIFY2(error.startsWith(path) && !error.isEmpty(), qPrintable(error));
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
    static bool copyTo(const QString &path, const QString &file)
    {
        return QDir().mkpath(QFileInfo(path).path()) && QFile::copy(file, path);
    }

    static void checkOwnVideos(const Sandbox &sandbox, const QStringList &names, const QString &clip)
    {
        QFile file(clip);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto bytes = file.readAll();
        const auto videos = sandbox.videos();
        QCOMPARE(videos.size(), names.size());
        for (qsizetype index = 0; index < names.size(); ++index) {
            const auto &name = names[index];
            const Case current(name.toUtf8());
            const auto video = videos[index].toObject();
            QCOMPARE(video["title"_L1].toString(), QFileInfo(name).completeBaseName());
            QCOMPARE(video["category"_L1].toString(), name.contains(u'/') ? name.section(u'/', 0, 0) : u"own"_s);
            QCOMPARE(video["durationSec"_L1].toInt(), 2);
            auto request = httpGet(QUrl(video["url"_L1].toString()));
            request.setHeader("Range", "bytes=100-");
            const auto media = HttpLoad(std::move(request)).resume().result();
            QCOMPARE(media.status, 206);
            QVERIFY(media.data == bytes.sliced(100));
            const auto picture = HttpLoad(httpGet(QUrl(video["imageUrl"_L1].toString()))).resume().result();
            QCOMPARE(QImage::fromData(picture.data).size(), QSize(480, 270));
        }
        for (const auto path : {u"/media/0.mkv", u"/media/8.mkv", u"/media/..%2f..%2fclip.mkv", u"/thumbnails/9.jpg"}) {
            const auto answer = HttpLoad(httpGet(sandbox.url(QStringView(path).toString()))).resume().result();
            QCOMPARE(answer.status, 404);
        }
    }

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
