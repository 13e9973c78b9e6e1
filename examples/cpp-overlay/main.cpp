// A C++ host: recommendations come over the video when it is paused, and a pick plays the video that was picked.
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QMediaPlayer>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QTimer>
#include <QtWebEngineQuick/qtwebenginequickglobal.h>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"cpp-overlay"_s);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"service"_s, u"Talk to the sandbox at <host:port>."_s, u"host:port"_s, u"127.0.0.1:8080"_s});
    parser.addOption({u"quit-after"_s, u"Pause half way and end after <seconds>."_s, u"seconds"_s});
    parser.process(application);
    const QString service = parser.value(u"service"_s);
    // [sandbox]
    zelvano::useService(service);
    // [sandbox]

    QQmlApplicationEngine engine(QUrl(u"qrc:/Main.qml"_s));
    if (engine.rootObjects().isEmpty())
        return 1;
    const QObject *window = engine.rootObjects().constFirst();
    auto *player = window->findChild<QMediaPlayer *>(u"mediaPlayer"_s);
    auto *output = window->findChild<QQuickItem *>(u"videoOutput"_s);

    player->setSource(QUrl(u"http://%1/media/1.mp4"_s.arg(service)));
    player->play();

    // [attach]
    const auto controller = zelvano::ZelvanoViewController::create(u"your-api-key"_s);
    controller->setSuggestionsSize(8);
    controller->setPlayer(zelvano::QtAVPlayerViewController::create(player, output), u"page-42"_s);
    // [attach]

    if (const int seconds = parser.value(u"quit-after"_s).toInt(); seconds > 0) {
        QTimer::singleShot(seconds * 500, player, &QMediaPlayer::pause);
        QTimer::singleShot(seconds * 1000, &application, &QCoreApplication::quit);
    }
    return QCoreApplication::exec();
}
