#include "Columns.h"
#include "LogCollector.h"
#include "Process.h"
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/Zelvano.h>

#include <QCoreApplication>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>

#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QString valueOf(int number)
{
    return u"%1-"_s.arg(number) + QString(500, u'x') + u"-%1"_s.arg(number); // The ends of a torn value differ.
}

/// The number in a value; -1 if the value is torn, -2 if there is none.
int numberOf(const QString &value)
{
    const int number = value.isNull() ? -2 : value.section(u'-', 0, 0).toInt();
    return value.isNull() || value == valueOf(number) ? number : -1;
}

/// A separate process: writes one number after another and prints each after it is stored.
int writeNumbers(const QStringList &arguments)
{
    auto &defaults = UserDefaults::standard();
    defaults.setFilePath(arguments.value(2));
    const int last = arguments.value(4).toInt();
    for (int i = 1; i <= last; ++i) {
        defaults.setString(valueOf(i), arguments.value(3));
        printf("%d\n", i);
        fflush(stdout);
    }
    return 0;
}

/// A separate process with fewer rights: reports what it can read, and the number of its write errors.
int useOnce(const QStringList &arguments)
{
    const LogCollector log;
    const auto user = geteuid();
    const auto state = arguments.value(3);
    if (state == "full"_L1) {
        const rlimit limit{64, 64}; // The limit of a file's size. A write fails half way, as on a full disk.
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &limit);
    } else if (state != "not text"_L1 && user == 0 && seteuid(65534) != 0) { // Root may write to all files.
        return 1;
    }
    auto &defaults = UserDefaults::standard();
    defaults.setFilePath(arguments.value(2));
    const int read = numberOf(defaults.stringForKey(ZVUserIdKey));
    for (int i = 0; i < 3; ++i) {
        defaults.setString(valueOf(8), ZVUserIdKey);
    }
    printf("%d %d\n", read, int(log.beginningWith(u"Error writing user defaults to "_s).size()));
    // The leak check at the end may not read a process that changed its user.
    return seteuid(user) == 0 && prctl(PR_SET_DUMPABLE, 1) == 0 ? 0 : 1;
}

} // namespace

/// A fault of the store costs only the persistence.
class tst_Persistence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // In memory if possible, to exclude the disk's time.
        const auto parent = QFileInfo(u"/dev/shm"_s).isWritable() ? u"/dev/shm"_s : QDir::tempPath();
        m_folder = std::make_unique<QTemporaryDir>(parent + u"/tst_Persistence-XXXXXX"_s);
        m_file = m_folder->filePath(u"store/defaults.json"_s);
        UserDefaults::standard().setFilePath(m_file);
        for (const auto key : {ZVUserIdKey, ZVUserUUIDKey})
            UserDefaults::standard().setString(valueOf(0), key);
    }

    void texts()
    {
        for (const auto &text : {u"3fb2c1"_s, u""_s, u"a, b;c"_s, u" \"x\\y\" = % [z]\n\t"_s, u"@Invalid()"_s, u"007"_s,
                                 u"Зеленый \U0001f3ac"_s}) {
            UserDefaults::standard().setString(text, ZVUserIdKey);
            QCOMPARE(stored(ZVUserIdKey), text);
            QVERIFY(!stored(ZVUserIdKey).isNull());
        }
        UserDefaults::standard().setString({}, ZVUserIdKey);
        QVERIFY(stored(ZVUserIdKey).isNull());
        QCOMPARE(stored(ZVUserUUIDKey), valueOf(0));
    }

    void killedWhileWriting()
    {
        const int count = figure("ZELVANO_KILLS", 50);
        int newOnes = 0;
        for (int i = 0; i < count; ++i) {
            UserDefaults::standard().setString(valueOf(0), ZVUserIdKey);
            const auto writer = start({u"--write"_s, m_file, ZVUserIdKey, u"1000000"_s});
            QVERIFY(writer->waitForReadyRead(10000));
            usleep(QRandomGenerator::global()->bounded(3000u)); // During one of the next writes.
            writer->kill();
            QVERIFY(writer->waitForFinished(10000));
            const int said = writer->readAllStandardOutput().trimmed().split('\n').last().toInt();
            const int found = numberOf(stored(ZVUserIdKey));
            QVERIFY2(found == said || found == said + 1, qPrintable(u"%1 after %2"_s.arg(found).arg(said)));
            QCOMPARE(stored(ZVUserUUIDKey), valueOf(0));
            newOnes += found != said;
        }
        const auto left = QDir(QFileInfo(m_file).path()).entryList(QDir::Files | QDir::Hidden).size() - 1;
        qInfo("%d kills, %d with the new value in place before it was said, %lld temporary files left", count, newOnes,
              qint64(left));
    }

    void defaultPath()
    {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder->path()));
        UserDefaults::standard().setFilePath({});
        UserDefaults::standard().setString(valueOf(1), ZVUserIdKey);
        const auto folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
        QVERIFY(folder.startsWith(m_folder->path()));
        QVERIFY(QFile::exists(folder + "/zelvano.json"_L1));
        QCOMPARE(stored(ZVUserIdKey), valueOf(1));
    }

    void useless()
    {
        const std::tuple<const char *, int, int> cases[] = {
            {"unreadable", -2, 1},  {"read-only file", 0, 1}, {"read-only folder", 0, 1}, {"full", 0, 1},
            {"full device", -2, 1}, {"inside a file", -2, 1}, {"a folder", -2, 1},        {"not text", -2, 0},
        };
        for (const auto &[name, read, complaints] : cases) {
            const Case current(name);
            const auto state = QString::fromLatin1(name);
            init();
            const auto folder = QFileInfo(m_file).path();
            const auto readable = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
            const auto entered = readable | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
            if (state == "not text"_L1) {
                QFile file(m_file);
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write("\x00\xff]userId\n[\x80", 12);
            }
            QVERIFY(QFile::setPermissions(m_folder->path(), entered | QFile::WriteOwner));
            QVERIFY(
                QFile::setPermissions(folder, state == "read-only folder"_L1 ? entered : entered | QFile::WriteOwner));
            QVERIFY(QFile::setPermissions(m_file, state == "unreadable"_L1 ? QFile::Permissions() : readable));
            if (state == "full device"_L1) {
                QVERIFY(QFile::remove(m_file));
                QVERIFY(QFile::link(u"/dev/full"_s, m_file));
            }
            const auto path = state == "inside a file"_L1 ? m_file + "/defaults.json"_L1
                              : state == "a folder"_L1    ? folder
                                                          : m_file;
            const auto process = start({u"--use"_s, path, state});
            QVERIFY(process->waitForFinished(10000));
            QCOMPARE(process->exitStatus(), QProcess::NormalExit);
            QCOMPARE(process->exitCode(), 0);
            const auto said = u"%1 %2\n"_s.arg(read).arg(complaints);
            QCOMPARE(QString::fromLatin1(process->readAllStandardOutput()), said);
            QVERIFY(QFile::setPermissions(folder, entered | QFile::WriteOwner));
            if (state == "full device"_L1)
                continue;
            QVERIFY(QFile::setPermissions(m_file, readable));
            QCOMPARE(numberOf(stored(ZVUserIdKey)), complaints > 0 ? 0 : 8); // Unchanged.
        }
    }

    /// Neither leaves a torn value. Entries written at the same moment may be lost, but not those of the last write.
    void twoProcesses()
    {
        constexpr int last = 100;
        const auto one = start({u"--write"_s, m_file, ZVUserIdKey, QString::number(last)});
        const auto other = start({u"--write"_s, m_file, ZVUserUUIDKey, QString::number(last)});
        const auto isRunning = [](QProcess &process) {
            return process.state() != QProcess::NotRunning && !process.waitForFinished(1);
        };
        while (isRunning(*one) || isRunning(*other)) {
            QVERIFY(numberOf(stored(ZVUserIdKey)) >= 0);
            QVERIFY(numberOf(stored(ZVUserUUIDKey)) >= 0);
        }
        QVERIFY(numberOf(stored(ZVUserIdKey)) == last || numberOf(stored(ZVUserUUIDKey)) == last);
    }

private:
    std::unique_ptr<QProcess> start(const QStringList &arguments) const
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QCoreApplication::applicationFilePath(), arguments);
        return process;
    }

    static QString stored(const QString &key) { return UserDefaults::standard().stringForKey(key); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
};

int main(int count, char **arguments)
{
    const QCoreApplication app(count, arguments);
    if (app.arguments().value(1) == u"--write"_s)
        return writeNumbers(app.arguments());
    if (app.arguments().value(1) == u"--use"_s)
        return useOnce(app.arguments());
    tst_Persistence test;
    return QTest::qExec(&test, count, arguments);
}

#include "tst_Persistence.moc"
