// mpv-overlay [--quit-after SECONDS] VIDEO [SERVICE]: plays the video; SERVICE is a sandbox's "host:port".
#include <QtQml>
#include <QtWebEngineQuick>

int main(int argc, char **argv)
{
    QtWebEngineQuick::initialize(); // Must come first: the overlay is a web page.
    QGuiApplication application(argc, argv);
    QCommandLineParser arguments;
    arguments.addOption({"quit-after", "End after <seconds>.", "seconds"});
    arguments.process(application);
    const auto given = arguments.positionalArguments();
    if (arguments.isSet("quit-after"))
        QTimer::singleShot(arguments.value("quit-after").toInt() * 1000, &application, &QGuiApplication::quit);

    QQmlApplicationEngine engine;
    engine.addImportPath(QML_DIR);
    engine.setInitialProperties({{"video", QUrl::fromUserInput(given.value(0))}, {"service", given.value(1)}});
    engine.load(QUrl("qrc:/Main.qml"));
    return engine.rootObjects().isEmpty() ? 1 : application.exec();
}
