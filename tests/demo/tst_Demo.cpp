#include "OwnVideos.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// The demo as a process of its own: it replays a script and leaves a trace.
class tst_Demo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void list() { pick({u"--view"_s, u"list"_s}); }
    void categoriesOfOwnVideos()
    {
        for (const auto &name : {u"own/a/1 %20.mp4"_s, u"own/a/2.mkv"_s, u"own/b/ü#?.webm"_s})
            QVERIFY(makeClip(m_folder.filePath(name), 8));
        pick({u"--view"_s, u"category"_s, u"--videos"_s, m_folder.filePath(u"own"_s)});
    }
    void endsWithAWebPage() { replay("quit\n", {u"--player"_s, u"kaltura"_s}); }

private:
    /// Plays a video and then the rest of a script.
    void replay(const QByteArray &rest, const QStringList &options)
    {
        QFile script(m_folder.filePath(u"script"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("wait-for recommendations\nplay\nwait-for event autoPlay\n" + rest);
        script.close();
        // GStreamer's HTTP source crashes now and then when the player ends.
        if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND"))
            qputenv("QT_MEDIA_BACKEND", "ffmpeg");
        qputenv("XDG_CACHE_HOME", QFile::encodeName(m_folder.filePath(u"cache"_s)));
        QProcess demo;
        demo.setProcessChannelMode(QProcess::MergedChannels);
        demo.start(QStringLiteral(ZELVANO_DEMO),
                   options + QStringList{u"--script"_s, script.fileName(), u"--trace"_s, m_folder.filePath(u"trace"_s),
                                         u"--defaults"_s, m_folder.filePath(u"defaults"_s)});
        QVERIFY(demo.waitForFinished(90'000));
        QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, demo.readAll().constData());
    }

    /// The player switches to the picked video, and the switch counts as the viewer's: "play", not "autoPlay".
    void pick(const QStringList &options)
    {
        replay("wait 1500\ntap-cell 1\nwait-for request events start\nwait-for request events play\nquit\n", options);
        if (QTest::currentTestFailed())
            return;
        QFile trace(m_folder.filePath(u"trace"_s));
        QVERIFY(trace.open(QIODevice::ReadOnly));
        QString picked, source;
        QStringList types;
        for (bool isAfterTap = false; !trace.atEnd();) {
            const auto entry = QJsonDocument::fromJson(trace.readLine()).object();
            const auto what = entry["what"_L1].toString();
            isAfterTap = isAfterTap || what == "tap-cell"_L1;
            if (what == "didSelectVideo"_L1)
                picked = entry["videoId"_L1].toString();
            else if (isAfterTap && what == "currentItem"_L1 && source.isNull())
                source = entry["value"_L1].toString();
            else if (isAfterTap && entry["url"_L1].toString().endsWith("/events"_L1))
                types.append(entry["body"_L1]["type"_L1].toString());
        }
        QVERIFY2(!picked.isNull() && source.contains("/media/"_L1 + picked.section(u'-', -1) + u'.'),
                 qPrintable(picked + " plays as "_L1 + source));
        QVERIFY2(types.contains(u"start"_s) && types.contains(u"play"_s) && !types.contains(u"autoPlay"_s),
                 qPrintable(types.join(u", "_s)));
    }

    const QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(tst_Demo)
#include "tst_Demo.moc"
