#include "HttpLoad.h"
#include "OwnVideos.h"
#include <ZelvanoUI/Sandbox.h>

#include <QImage>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace zelvano::sandbox;

/// What leaves the sandbox. The library's own tests cover its answers and faults.
class tst_Sandbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        for (const auto &name : played + QStringList{u".hidden.mkv"_s, u".hidden/film.mkv"_s, u"a/notes.txt"_s}) {
            QVERIFY(QDir().mkpath(QFileInfo(own.filePath(name)).path()));
            QVERIFY(QFile::copy(clip, own.filePath(name)));
        }
        QVERIFY(QFile::link(clip, own.filePath(u"outside.mkv"_s)));
        QVERIFY(QFile::copy(clip, own.filePath(u"broken.mkv"_s)) && QFile::resize(own.filePath(u"broken.mkv"_s), 99));
        // ffmpeg would read it, as it would read a list of other files.
        QVERIFY(QImage(160, 90, QImage::Format_RGB32).save(own.filePath(u"picture.mp4"_s), "PNG"));

        for (const int total : {7, 2}) {
            Sandbox sandbox;
            std::mutex mutex;
            QStringList skipped;
            int reported = 0;
            const auto note = [&](const VideoProgress &progress) {
                const std::lock_guard lock(mutex);
                reported = std::max(reported, progress.total);
                if (!progress.skipped.isNull())
                    skipped.append(progress.skipped.section(u':', 0, 0));
            };
            QCOMPARE(sandbox.setVideos(own.path(), note), QString());
            QVERIFY(sandbox.start());
            skipped.sort();
            QCOMPARE(skipped, QStringList({u"broken.mkv"_s, u"outside.mkv"_s, u"picture.mp4"_s}));
            QCOMPARE(reported, total);
            QStringList names;
            for (const auto &video : sandbox.videos()) {
                names.append(video["costumerVideoId"_L1].toString());
                QCOMPARE(video["durationSec"_L1].toInt(), 2);
                const auto media = get(QUrl(video["url"_L1].toString()), "bytes=100-");
                QCOMPARE(std::pair(media.status, media.data.size()), std::pair(206, QFileInfo(clip).size() - 100));
                QVERIFY(!QImage::fromData(get(QUrl(video["imageUrl"_L1].toString())).data).isNull());
            }
            QCOMPARE(names, played);
            for (const auto &path : {u"/media/0.mkv"_s, u"/media/8.mkv"_s, u"/media/..%2f..%2fclip.mkv"_s})
                QCOMPARE(get(sandbox.url(path)).status, 404);
        }
        for (const auto &path : {u""_s, folder.filePath(u"missing"_s), folder.filePath(u"cache"_s)})
            QVERIFY(Sandbox().setVideos(path).startsWith(path + u' '));
    }

    // A server on all addresses would also answer at the second one.
    void loopbackOnly()
    {
        Sandbox sandbox;
        QVERIFY(sandbox.start());
        auto elsewhere = sandbox.url(u"/layout/"_s);
        QVERIFY(!get(elsewhere).error);
        elsewhere.setHost(u"127.0.0.2"_s);
        QVERIFY(get(elsewhere).error);
    }

private:
    static HttpResult get(const QUrl &url, const QByteArray &range = "bytes=0-")
    {
        auto request = httpGet(url);
        request.setHeader("Range", range);
        return HttpLoad(request).resume().result();
    }
};

QTEST_GUILESS_MAIN(tst_Sandbox)
#include "tst_Sandbox.moc"
