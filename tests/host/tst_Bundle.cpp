#include "LogCollector.h"
#include <ZelvanoUI/Bundle.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using zelvano::Bundle;

/// Asked for before the application object exists, as an engine may.
const auto earlyBundle = zelvano::zelvanoBundle();

class tst_Bundle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void brokenInfo()
    {
        for (const QByteArray info : {"[]", "{", "", "7"}) {
            const LogCollector log;
            QVERIFY(!Bundle::atPath(write(m_folder.filePath(u"broken.bundle"_s), info)));
            QCOMPARE(log.lines().size(), 1);
        }
        const auto bundle = Bundle::atPath(write(m_folder.path(), R"({"CFBundleShortVersionString":7})"));
        QVERIFY(bundle && bundle->infoValue(u"CFBundleShortVersionString"_s).isNull()); // A number is no version text.
    }

    void besideTheExecutable()
    {
        QVERIFY(!Bundle::inMainBundle(u"NoSuchResources"_s, u"bundle"_s));
        const auto compiledIn = Bundle::inMainBundle(u"ZelvanoUIResources"_s, u"bundle"_s);
        QVERIFY(compiledIn);
        QCOMPARE(compiledIn->infoValue(u"CFBundleIdentifier"_s), u"ZelvanoUI"_s);

        const QTemporaryDir host(QCoreApplication::applicationDirPath() + "/tst_BundleXXXXXX"_L1);
        const auto name = QDir(host.path()).dirName() + "/Host"_L1;
        const auto folder = write(host.filePath(u"Host.bundle"_s), R"({"CFBundleShortVersionString":"9.9"})");
        QVERIFY(QFile::copy(folder + "/Info.json"_L1, folder + "/View.qml"_L1));
        const auto beside = Bundle::inMainBundle(name, u"bundle"_s);
        QVERIFY(beside);
        QCOMPARE(beside->infoValue(u"CFBundleShortVersionString"_s), u"9.9"_s);
        QCOMPARE(beside->resource(u"View"_s, u"qml"_s), QUrl::fromLocalFile(folder + "/View.qml"_L1));
        QVERIFY(!beside->resource(u"Other"_s, u"qml"_s).isValid());
    }

    /// The folder beside the executable comes before the compiled-in bundle. In a copy, since other programs run here.
    void besideComesFirst()
    {
        if (qEnvironmentVariableIsSet("ZELVANO_COPY")) {
            QVERIFY(earlyBundle);
            QCOMPARE(zelvano::zelvanoBundle()->infoValue(u"CFBundleShortVersionString"_s), u"9.9"_s);
            return;
        }
        const auto copy = m_folder.filePath(u"copy"_s);
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
        write(m_folder.filePath(u"ZelvanoUIResources.bundle"_s), R"({"CFBundleShortVersionString":"9.9"})");
        qputenv("ZELVANO_COPY", "1");
        QCOMPARE(QProcess::execute(copy, {u"besideComesFirst"_s}), 0);
    }

private:
    static QString write(const QString &folder, const QByteArray &info)
    {
        QDir().mkpath(folder);
        QFile file(folder + "/Info.json"_L1);
        return file.open(QIODevice::WriteOnly) && file.write(info) == info.size() ? folder : QString();
    }

    const QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(tst_Bundle)
#include "tst_Bundle.moc"
