#include "LogCollector.h"
#include "Process.h"
#include "UserDefaults.h"
#include "Zelvano.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QString valueOf(int number)
{
    return u"%1-"_s.arg(number) + QString(500, u'x') + u"-%1"_s.arg(number); // Torn, its ends differ.
}

/// The number that a value was made from; -1 when it is torn, -2 when there is none.
int numberOf(const QString &value)
{
    const int number = value.isNull() ? -2 : value.section(u'-', 0, 0).toInt();
    return value.isNull() || value == valueOf(number) ? number : -1;
}

/// In a process of its own: writes one number after another, each said once it is stored.
int writeNumbers(const QStringList &arguments)
{
    auto &defaults = UserDefaults::standard();
    defaults.setFilePath(arguments.value(2));
    const int last = arguments.value(4).toInt();
    for (int i = 1; i <= last; ++i) {
        defaults.setString(valueOf(i), arguments.value(3));
        defaults.synchronize();
        printf("%d\n", i);
        fflush(stdout);
    }
    return 0;
}

/// In a process of its own, which may do less than this one: what it can read, and how often it complains of writing.
int useOnce(const QStringList &arguments)
{
    const LogCollector log;
    const auto user = geteuid();
    if (arguments.value(3) == u"full"_s) {
        const rlimit limit{64, 64}; // No file grows beyond; as on a full disk the write fails half way.
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &limit);
    } else if (user == 0 && seteuid(65534) != 0) { // Root may write everything.
        return 1;
    }
    auto &defaults = UserDefaults::standard();
    defaults.setFilePath(arguments.value(2));
    const int read = numberOf(defaults.stringForKey(ZVUserIdKey));
    for (int i = 0; i < 3; ++i) {
        defaults.setString(valueOf(8), ZVUserIdKey);
        defaults.synchronize();
    }
    printf("%d %d\n", read, int(log.beginningWith(u"Error writing user defaults to "_s).size()));
    // The leak check at the end looks at its own process, which one that changed its user may not.
    return seteuid(user) == 0 && prctl(PR_SET_DUMPABLE, 1) == 0 ? 0 : 1;
}

} // namespace

/// Whatever befalls the store, it costs the persistence at most.
class tst_Persistence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void killedWhileWriting();
    void lockLeftBehind();
    void useless_data();
    void useless();
    void twoProcesses();

private:
    std::unique_ptr<QProcess> start(const QStringList &arguments) const;
    int stored(const QString &key);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    int m_copies = 0;
};

void tst_Persistence::init()
{
    // In memory, where there is such a folder: a disk's own time is no part of this.
    const auto parent = QFileInfo(u"/dev/shm"_s).isWritable() ? u"/dev/shm"_s : QDir::tempPath();
    m_folder = std::make_unique<QTemporaryDir>(parent + u"/tst_Persistence-XXXXXX"_s);
    m_file = m_folder->filePath(u"store/defaults.ini"_s);
    UserDefaults::standard().setFilePath(m_file);
    for (const auto key : {ZVUserIdKey, ZVUserUUIDKey})
        UserDefaults::standard().setString(valueOf(0), key);
}

std::unique_ptr<QProcess> tst_Persistence::start(const QStringList &arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(QCoreApplication::applicationFilePath(), arguments);
    return process;
}

/// Out of a copy: of the file itself Qt may remember what stood there before.
int tst_Persistence::stored(const QString &key)
{
    const auto copy = m_folder->filePath(u"%1.ini"_s.arg(++m_copies));
    QFile::copy(m_file, copy);
    UserDefaults::standard().setFilePath(copy);
    const auto value = UserDefaults::standard().stringForKey(key);
    UserDefaults::standard().setFilePath(m_file);
    return numberOf(value);
}

void tst_Persistence::killedWhileWriting()
{
    const int count = figure("ZELVANO_KILLS", 50);
    int newOnes = 0;
    for (int i = 0; i < count; ++i) {
        UserDefaults::standard().setString(valueOf(0), ZVUserIdKey);
        const auto writer = start({u"--write"_s, m_file, ZVUserIdKey, u"1000000"_s});
        QVERIFY(writer->waitForReadyRead(10000));
        usleep(QRandomGenerator::global()->bounded(3000u)); // Somewhere within the next few writes.
        writer->kill();
        QVERIFY(writer->waitForFinished(10000));
        const int said = writer->readAllStandardOutput().trimmed().split('\n').last().toInt();
        const int found = stored(ZVUserIdKey);
        QVERIFY2(found == said || found == said + 1, qPrintable(u"%1 after %2"_s.arg(found).arg(said)));
        QCOMPARE(stored(ZVUserUUIDKey), 0);
        newOnes += found != said;
    }
    UserDefaults::standard().setString(valueOf(7), ZVUserIdKey); // No lock was left behind.
    QCOMPARE(stored(ZVUserIdKey), 7);
    const auto left = QDir(QFileInfo(m_file).path()).entryList(QDir::Files | QDir::Hidden).size() - 1;
    qInfo("%d kills, %d with the new value in place before it was said, %lld temporary files left", count, newOnes,
          qint64(left));
}

/// By a process that was killed as it made its lock.
void tst_Persistence::lockLeftBehind()
{
    QFile lock(m_file + u".lock"_s);
    QVERIFY(lock.open(QIODevice::WriteOnly));
    QElapsedTimer clock;
    clock.start();
    UserDefaults::standard().setString(valueOf(1), ZVUserIdKey);
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(stored(ZVUserIdKey), 1);

    // One that a process holds which hangs.
    const int folder = open(QFile::encodeName(QFileInfo(m_file).path()).constData(), O_RDONLY | O_DIRECTORY);
    QCOMPARE(flock(folder, LOCK_EX), 0);
    clock.restart();
    UserDefaults::standard().setString(valueOf(2), ZVUserIdKey);
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
    close(folder);
    QCOMPARE(stored(ZVUserIdKey), 2);
}

void tst_Persistence::useless_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<int>("read");
    QTest::newRow("unreadable") << u"unreadable"_s << -2;
    QTest::newRow("read-only file") << u"read-only"_s << 0;
    QTest::newRow("read-only folder") << u"read-only folder"_s << 0;
    QTest::newRow("full") << u"full"_s << 0;
    QTest::newRow("full device") << u"full device"_s << -2;
}

void tst_Persistence::useless()
{
    QFETCH(QString, state);
    QFETCH(int, read);
    const auto folder = QFileInfo(m_file).path();
    const auto readable = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    const auto entered = readable | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(m_folder->path(), entered | QFile::WriteOwner));
    QVERIFY(QFile::setPermissions(folder, state == u"read-only folder"_s ? entered : entered | QFile::WriteOwner));
    QVERIFY(QFile::setPermissions(m_file, state == u"unreadable"_s ? QFile::Permissions() : readable));
    if (state == u"full device"_s) {
        QVERIFY(QFile::remove(m_file));
        QVERIFY(QFile::link(u"/dev/full"_s, m_file));
    }
    const auto process = start({u"--use"_s, m_file, state});
    QVERIFY(process->waitForFinished(10000));
    QCOMPARE(process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(process->exitCode(), 0);
    QCOMPARE(process->readAllStandardOutput(), QByteArray::number(read) + " 1\n");
    QVERIFY(QFile::setPermissions(folder, entered | QFile::WriteOwner));
    if (state == u"full device"_s)
        return;
    QVERIFY(QFile::setPermissions(m_file, readable));
    QCOMPARE(stored(ZVUserIdKey), 0); // As it was.
}

void tst_Persistence::twoProcesses()
{
    constexpr int last = 100;
    const auto one = start({u"--write"_s, m_file, ZVUserIdKey, QString::number(last)});
    const auto other = start({u"--write"_s, m_file, ZVUserUUIDKey, QString::number(last)});
    const auto isRunning = [](QProcess &process) {
        return process.state() != QProcess::NotRunning && !process.waitForFinished(1);
    };
    while (isRunning(*one) || isRunning(*other)) {
        QVERIFY(stored(ZVUserIdKey) >= 0);
        QVERIFY(stored(ZVUserUUIDKey) >= 0);
    }
    QCOMPARE(stored(ZVUserIdKey), last);
    QCOMPARE(stored(ZVUserUUIDKey), last);
}

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
