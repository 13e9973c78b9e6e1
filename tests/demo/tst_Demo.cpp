#include "Columns.h"
#include "OwnVideos.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

/// The demo as a process of its own: it replays a script and leaves a trace.
class tst_Demo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pickInANativeView_data()
    {
        addColumns<QString, bool>({"view", "hasOwnVideos"});
        QTest::newRow("list") << u"list"_s << false;
        QTest::newRow("category") << u"category"_s << false;
        QTest::newRow("list of own videos") << u"list"_s << true;
        QTest::newRow("categories of own videos") << u"category"_s << true;
    }

    /// The player switches to the picked video, and the switch counts as the viewer's: "play", not "autoPlay".
    void pickInANativeView()
    {
        QFETCH(QString, view);
        QFETCH(bool, hasOwnVideos);
        const QTemporaryDir folder;
        QStringList videos;
        if (hasOwnVideos) {
            for (const auto &name : {u"own/a/1 %20.mp4"_s, u"own/a/2.mkv"_s, u"own/b/ü#?.webm"_s})
                QVERIFY(makeClip(folder.filePath(name), 8));
            videos = {u"--videos"_s, folder.filePath(u"own"_s)};
        }
        QFile script(folder.filePath(u"script"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("wait-for recommendations\nplay\nwait-for event autoPlay\nwait 1500\ntap-cell 1"
                     "\nwait-for request events start\nwait-for request events play\nquit\n");
        script.close();
        const auto trace = folder.filePath(u"trace"_s);
        QProcess demo;
        auto environment = QProcessEnvironment::systemEnvironment();
        // GStreamer's HTTP source crashes now and then when the player ends.
        if (!environment.contains(u"QT_MEDIA_BACKEND"_s))
            environment.insert(u"QT_MEDIA_BACKEND"_s, u"ffmpeg"_s);
        environment.insert(u"XDG_CACHE_HOME"_s, folder.filePath(u"cache"_s));
        demo.setProcessEnvironment(environment);
        demo.setProcessChannelMode(QProcess::MergedChannels);
        demo.start(QStringLiteral(ZELVANO_DEMO),
                   QStringList{u"--view"_s, view, u"--script"_s, script.fileName(), u"--trace"_s, trace,
                               u"--defaults"_s, folder.filePath(u"defaults"_s)} +
                       videos);
        QVERIFY(demo.waitForFinished(90'000));
        QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, demo.readAll().constData());

        const auto entries = entriesAfterTap(trace);
        const auto pick = valueOf(entries, "didSelectVideo"_L1, "videoId"_L1);
        QVERIFY(!pick.isEmpty());
        const auto source = valueOf(entries, "currentItem"_L1, "value"_L1);
        QVERIFY2(source.contains("/media/"_L1 + pick.section(u'-', -1) + u'.'),
                 qPrintable(pick + " plays as "_L1 + source));
        QStringList types;
        for (const auto &entry : entries) {
            if (entry["kind"_L1] == "request"_L1 && entry["url"_L1].toString().endsWith("/events"_L1))
                types.append(entry["body"_L1]["type"_L1].toString());
        }
        QVERIFY2(types.contains(u"start"_s) && types.contains(u"play"_s) && !types.contains(u"autoPlay"_s),
                 qPrintable(types.join(u", "_s)));
    }

private:
    static std::vector<QJsonObject> entriesAfterTap(const QString &trace)
    {
        QFile file(trace);
        std::vector<QJsonObject> entries;
        bool isAfter = false;
        if (!file.open(QIODevice::ReadOnly))
            return entries;
        while (!file.atEnd()) {
            const auto entry = QJsonDocument::fromJson(file.readLine()).object();
            isAfter = isAfter || entry["what"_L1] == "tap-cell"_L1;
            if (isAfter)
                entries.push_back(entry);
        }
        return entries;
    }

    /// The field of the first such entry.
    static QString valueOf(const std::vector<QJsonObject> &entries, QLatin1StringView what, QLatin1StringView field)
    {
        const auto found = std::ranges::find_if(entries, [&](const auto &entry) { return entry["what"_L1] == what; });
        return found == entries.end() ? QString() : found->value(field).toString();
    }
};

QTEST_GUILESS_MAIN(tst_Demo)
#include "tst_Demo.moc"
