#include "EngineFixture.h"
#include <ZelvanoUI/PlayerEvents.h>

#include <QDir>
#include <QTemporaryFile>

#include <cfenv>
#include <clocale>
#include <locale>

#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using sandbox::Fault;

/// The process is the host's.
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
            EngineFixture service;    // Its server ignores SIGPIPE for the process.
            signal(SIGPIPE, SIG_DFL); // A write to a connection that was reset would end the process.
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
            meanwhile = processSettings(); // While its threads run, and not only when all is over.
        }
        fflush(stdout);
        dup2(own, STDOUT_FILENO);
        close(own);
        QCOMPARE(output.size(), 0);
        QCOMPARE(errors, 40);
        QCOMPARE(meanwhile, before);
        QCOMPARE(processSettings(), before);
    }

private:
    /// What belongs to the whole process, as text.
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

QTEST_GUILESS_MAIN(tst_HostIsSafe)
#include "tst_HostIsSafe.moc"
