#include "EngineFixture.h"
#include "Utilities.h"
#include <ZelvanoUI/PlayerEvents.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryFile>

#include <cfenv>
#include <clocale>
#include <future>
#include <locale>

#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

namespace {

std::atomic<int> eventLines = 0;

class Writer : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE void write() {}
};

Writer *writer = nullptr;

/// A host's message handler that passes each line to the main thread and waits for it. By name: ThreadSanitizer does
/// not see the order in which Qt passes a functor.
void writeOnMainThread(QtMsgType, const QMessageLogContext &, const QString &line)
{
    if (!MainQueue::isMainThread())
        QMetaObject::invokeMethod(writer, "write", Qt::BlockingQueuedConnection);
    eventLines += line.startsWith(u"events::"_s);
}

std::vector<std::future<void>> uses;
std::shared_ptr<ZVRecommendation> badRecord; ///< One of its videos is no object.

/// A host's message handler that waits until another thread has used the library.
void useOnAnotherThread(QtMsgType, const QMessageLogContext &, const QString &)
{
    uses.push_back(std::async(std::launch::async, [] {
        UserDefaults::standard().stringForKey(ZVUserIdKey);
        request(ZVKeepAlive);
        if (badRecord)
            badRecord->videoList();
    }));
    if (uses.back().wait_for(5s) != std::future_status::ready)
        QTest::qFail("a lock is held while a line is logged", __FILE__, __LINE__);
}

/// Ends the application object while calls are under way.
int endWithCallsUnderWay(int count, char **arguments)
{
    qputenv("XDG_CONFIG_HOME", QDir::tempPath().toLocal8Bit() + "/no-such-folder");
    RawServer network([](RawServer::Connection &connection) {
        while (!connection.readRequest().isEmpty())
            ;
    });
    std::shared_ptr<Zelvano> engine;
    {
        const QCoreApplication app(count, arguments);
        writer = new Writer; // Until the process ends.
        qInstallMessageHandler(writeOnMainThread);
        useService(QString::fromLatin1("127.0.0.1:" + QByteArray::number(network.url().port())));
        for (int i = 0; i < 5; ++i) {
            engine = Zelvano::create();
            engine->initializeWithAPIKey(u"key"_s);
        }
    }
    return 0;
}

} // namespace

/// The library leaves settings of the process alone: they belong to the host.
class tst_HostIsSafe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void processIsLeftAlone()
    {
        QTemporaryFile output;
        QVERIFY(output.open());
        fflush(stdout);
        const int own = dup(STDOUT_FILENO);
        dup2(output.handle(), STDOUT_FILENO);
        QStringList before, meanwhile;
        int errors = 0;
        {
            EngineFixture service;    // Its server makes the process ignore SIGPIPE.
            signal(SIGPIPE, SIG_DFL); // With this, a write to a reset connection ends the process.
            before = processSettings();
            service.openView();
            for (const auto kind : {Fault::Kind::CutBeforeAnswer, Fault::Kind::CutWithinAnswer, Fault::Kind::Garbage}) {
                service.fault(PlayerEvent::Pause, {kind});
                service.engine->playerEvent(PlayerEvent::Pause, service.subscriber);
                service.advance(30s);
            }
            RawServer network([](RawServer::Connection &connection) { connection.reset(); });
            for (const auto &scheme : {u"http"_s, u"https"_s}) {
                auto request = httpPost(network.url(), QByteArray(1 << 20, 'x'));
                request.url.setScheme(scheme);
                for (int i = 0; i < 20; ++i)
                    errors += HttpLoad(request).resume().result().error.has_value();
            }
            meanwhile = processSettings(); // While the library's threads run, not only after their end.
        }
        fflush(stdout);
        dup2(own, STDOUT_FILENO);
        close(own);
        QCOMPARE(output.size(), 0);
        QCOMPARE(errors, 40);
        QCOMPARE(meanwhile, before);
        QCOMPARE(processSettings(), before);
    }

    void messageHandlerWaitsForTheMainThread()
    {
        EngineFixture service;
        service.openView();
        Writer local;
        writer = &local;
        const auto previous = qInstallMessageHandler(writeOnMainThread);
        for (int i = 0; i < 300; ++i) {
            service.engine->readyEvent(service.subscriber); // Its answer logs and changes the state.
            QCoreApplication::processEvents();
            service.engine->playerEvent(PlayerEvent::Pause, service.subscriber);
        }
        // "events:: ready" and "events:: pause" of each turn.
        const bool isOver = EngineFixture::wait([] { return eventLines == 600; });
        qInstallMessageHandler(previous);
        QVERIFY(isOver);
        service.settle();
        QCOMPARE(service.sentCount(PlayerEvent::Pause), 300);
    }

    void messageHandlerUsesTheLibrary()
    {
        UserDefaults::standard().setFilePath(u"/dev/null/defaults.json"_s);
        const auto previous = qInstallMessageHandler(useOnAnotherThread);
        UserDefaults::standard().setString(u"cannot be written"_s, ZVUserIdKey);
        request(ZVKeepAlive, u"two\nlines"_s);
        badRecord = recommendations({{u"data"_s, QJsonObject{{u"videos"_s, QJsonArray{1}}}}});
        badRecord->categories();
        qInstallMessageHandler(previous);
        UserDefaults::standard().setFilePath({});
        QCOMPARE(uses.size(), 3U);
    }

    void messageHandlerWaitsWhileTheApplicationEnds()
    {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {u"--end"_s});
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    }

private:
    /// The settings of the process as text.
    static QStringList processSettings()
    {
        QStringList list;
        for (int number = 1; number < NSIG; ++number) {
            struct sigaction action = {};
            if (sigaction(number, nullptr, &action) == 0)
                list.append(u"signal %1: %2"_s.arg(number).arg(quintptr(action.sa_handler), 0, 16));
        }
        sigset_t blocked;
        sigprocmask(SIG_BLOCK, nullptr, &blocked);
        const auto mask = umask(0);
        umask(mask);
        list += {u"SIGPIPE blocked: %1"_s.arg(sigismember(&blocked, SIGPIPE)),
                 u"umask %1"_s.arg(mask, 0, 8),
                 QString::fromLocal8Bit(setlocale(LC_ALL, nullptr)),
                 QString::fromStdString(std::locale().name()),
                 QDir::currentPath(),
                 u"rounding %1"_s.arg(fegetround())};
        for (char **variable = environ; *variable; ++variable)
            list.append(QString::fromLocal8Bit(*variable));
        return list;
    }
};

int main(int count, char **arguments)
{
    if (count > 1 && qstrcmp(arguments[1], "--end") == 0)
        return endWithCallsUnderWay(count, arguments);
    const QCoreApplication app(count, arguments);
    tst_HostIsSafe test;
    return QTest::qExec(&test, count, arguments);
}

#include "tst_HostIsSafe.moc"
