#include "Host.h"
#include "Internals.h"
#include "Options.h"
#include "ScriptRunner.h"
#include "StallProbe.h"
#include <ZelvanoUI/EventLog.h>

#include <QFile>
#include <QJsonDocument>
#include <QPalette>
#include <QQmlApplicationEngine>
#include <QScopeGuard>
#include <QtWebEngineQuick/qtwebenginequickglobal.h>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

QtMessageHandler defaultMessageHandler = nullptr;
zelvano::EventLog *eventLog = nullptr;

/// Puts the library's log into the trace. Drops request bodies, which the trace has already, and passes on other lines.
void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QLatin1StringView category(context.category);
    if (eventLog && category == "zelvano"_L1)
        eventLog->add(u"log"_s, {{"text"_L1, message}});
    else if (category != "zelvano.body"_L1)
        defaultMessageHandler(type, context, message);
}

std::optional<std::vector<demo::ScriptRunner::Command>> readScript(const QString &path)
{
    QFile file(path);
    QString error;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        error = file.errorString();
    else if (auto commands = demo::ScriptRunner::parse(QString::fromUtf8(file.readAll()), error))
        return commands;
    std::fprintf(stderr, "zelvano-demo: script %s: %s\n", qPrintable(path), qPrintable(error));
    return std::nullopt;
}

/// One session, from the window to its end. Returns the exit status.
int run(demo::StallProbe &application, const demo::Options &options, zelvano::EventLog &log,
        std::vector<demo::ScriptRunner::Command> commands)
{
    const auto host = std::make_shared<demo::Host>(options, log);
    if (!host->reachService())
        return 1;
    demo::registerTimelineTypes();
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{u"host"_s, QVariant::fromValue(host.get())}});
    engine.load(QUrl(u"qrc:/demo/Main.qml"_s));
    auto *window =
        engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    if (!window)
        return 1;
    if (!host->prepareVideos())
        return 1;
    if (!window->isVisible()) // The viewer has closed it meanwhile.
        return 0;
    host->attach(window);
    application.watchWebEngine([&host] { return host->hasRecommendations(); });
    application.reset();

    std::unique_ptr<demo::ScriptRunner> runner;
    if (!options.script.isEmpty()) {
        runner = std::make_unique<demo::ScriptRunner>(*host, log, std::move(commands), options.screenshots);
        QObject::connect(runner.get(), &demo::ScriptRunner::finished, &application,
                         [](int exitStatus) { QCoreApplication::exit(exitStatus); });
        runner->start();
    }
    const int status = application.exec();
    application.watchWebEngine([] { return true; }); // The host's end sends events, too.
    auto summary = application.summary();
    log.add(u"summary"_s, summary);
    if (options.stalls) {
        summary.insert("longerThanAFrame"_L1, application.longerThanAFrame());
        std::printf("%s\n", QJsonDocument(summary).toJson(QJsonDocument::Compact).constData());
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    QtWebEngineQuick::initialize();
    demo::StallProbe application(argc, argv);
    QCoreApplication::setApplicationName(u"zelvano-demo"_s);

    const auto options = demo::Options::parse(QCoreApplication::arguments());
    if (!options)
        return 1;
    zelvano::EventLog log;
    if (!options->trace.isEmpty() && !log.writeTo(options->trace)) {
        std::fprintf(stderr, "zelvano-demo: trace %s: %s\n", qPrintable(options->trace), qPrintable(log.errorString()));
        return 1;
    }
    std::vector<demo::ScriptRunner::Command> commands;
    if (!options->script.isEmpty()) {
        auto read = readScript(options->script);
        if (!read)
            return 1;
        commands = std::move(*read);
    }
    eventLog = &log;
    defaultMessageHandler = qInstallMessageHandler(handleMessage);
    const auto restoreHandler = qScopeGuard([] {
        qInstallMessageHandler(defaultMessageHandler);
        eventLog = nullptr;
    });

    if (options->colors != "system"_L1)
        QGuiApplication::setPalette(QPalette(QColor(options->colors == "dark"_L1 ? Qt::black : Qt::white)));
    return run(application, *options, log, std::move(commands));
}
