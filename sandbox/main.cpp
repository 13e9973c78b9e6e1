#include <ZelvanoUI/Sandbox.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using zelvano::sandbox::Request;
using zelvano::sandbox::Sandbox;
using zelvano::sandbox::VideoProgress;

namespace {

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

QString statusText(const Request &request)
{
    if (request.httpStatus == 0)
        return u"no answer"_s;
    return u"%1 (HTTP %2)"_s.arg(request.serviceStatus).arg(request.httpStatus);
}

void printRequest(const Request &request)
{
    const QString line = u"%1  %2 %3 %4  %5\n"_s.arg(request.time.toLocalTime().toString(u"HH:mm:ss.zzz"_s),
                                                     request.method.leftJustified(4), request.path.leftJustified(24),
                                                     request.type().leftJustified(12), statusText(request));
    std::fputs(qUtf8Printable(line), stdout);
    std::fflush(stdout);
}

/// One line, which the next replaces; a line of its own for a file that is left out.
void printProgress(const VideoProgress &progress)
{
    if (!progress.skipped.isNull())
        std::fprintf(stderr, "\rzelvano-sandbox: left out %s\n", qUtf8Printable(progress.skipped));
    if (progress.total > 0) {
        std::fprintf(stderr, "\rPreparing the videos: %d of %d%s", progress.done, progress.total,
                     progress.done == progress.total ? "\n" : "");
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"A recommendation service for development. It listens on 127.0.0.1 only."_s);
    parser.addHelpOption();
    parser.addOption({u"port"_s, u"Listen on port <N>; 0 for any free one."_s, u"N"_s, u"8080"_s});
    const QStringList scenarios = Sandbox::scenarioNames();
    parser.addOption({u"scenario"_s, u"Answer as in scenario <name>: "_s + scenarios.join(", "_L1) + u'.', u"name"_s,
                      scenarios.constFirst()});
    parser.addOption({u"videos"_s, u"Recommend the videos in <folder>: MP4, WebM, MKV."_s, u"folder"_s});
    parser.process(application);

    bool valid = false;
    const quint16 port = parser.value(u"port"_s).toUShort(&valid);
    if (!valid) {
        std::fputs("zelvano-sandbox: --port must be a number from 0 to 65535\n", stderr);
        return 2;
    }

    const auto scenario = Sandbox::scenarioByName(parser.value(u"scenario"_s));
    if (!scenario) {
        std::fprintf(stderr, "zelvano-sandbox: --scenario must be one of %s\n",
                     qUtf8Printable(scenarios.join(", "_L1)));
        return 2;
    }

    // Block the signals before the server starts its threads, so that only sigwait() receives them.
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    Sandbox sandbox;
    sandbox.setScenario(*scenario);
    sandbox.setRequestListener(printRequest);
    if (parser.isSet(u"videos"_s)) {
        if (const auto error = sandbox.setVideos(parser.value(u"videos"_s), printProgress); !error.isNull()) {
            std::fprintf(stderr, "zelvano-sandbox: %s\n", qUtf8Printable(error));
            return 1;
        }
    }
    if (!sandbox.start(port)) {
        std::fprintf(stderr, "zelvano-sandbox: port %d of 127.0.0.1 is in use\n", port);
        return 1;
    }
    std::printf("The recommendation service is at %s\n", qUtf8Printable(sandbox.url(u"/"_s).toString()));
    std::fflush(stdout);

    int received = 0;
    sigwait(&signals, &received);
    return 0;
}
