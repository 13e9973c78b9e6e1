// A C++ host with the native list beside the player. A video that the viewer picks in the list plays next.
#include <ZelvanoUI/QtAVPlayerViewController.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/ZVRecommendationViewFactory.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QtMultimedia>
#include <QtQuick>
#include <QtWebEngineQuick>

using namespace Qt::StringLiterals;

// [pick]
struct Picks : zelvano::ZVRecommendationViewDelegate
{
    std::shared_ptr<zelvano::Zelvano> engine;

    void didSelecteRecommendation(const std::shared_ptr<zelvano::ZVVideoParams> &video) override
    {
        engine->playSelected(video);
    }
};
// [pick]

int main(int argc, char **argv)
{
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOption({u"service"_s, u"Talk to the sandbox at <host:port>."_s, u"host:port"_s, u"127.0.0.1:8080"_s});
    parser.addOption({u"quit-after"_s, u"End after <seconds>."_s, u"seconds"_s, u"3600"_s});
    parser.process(application);
    const QString service = parser.value(u"service"_s);
    zelvano::useService(service);

    QQmlApplicationEngine engine(QUrl(u"qrc:/Main.qml"_s));
    const QObject *window = engine.rootObjects().value(0);
    auto *player = window->findChild<QMediaPlayer *>(u"mediaPlayer"_s);
    auto *output = window->findChild<QQuickItem *>(u"videoOutput"_s);
    auto *place = window->findChild<QQuickItem *>(u"place"_s);
    player->setSource(QUrl(u"http://%1/media/1.mp4"_s.arg(service)));
    player->play();

    const auto controller = zelvano::ZelvanoViewController::create(u"your-api-key"_s);
    // [list]
    using Factory = zelvano::ZVRecommendationViewFactory;
    const auto list = Factory::recommendationViewForType(Factory::List); // Or Factory::Category.
    list->view()->setParentItem(place);
    list->view()->setSize(place->size());
    const auto picks = std::make_shared<Picks>();
    picks->engine = controller->zelvano();
    list->setDelegate(picks); // Held weakly.
    controller->setRecommendationView(list);
    // [list]
    controller->setPlayer(zelvano::QtAVPlayerViewController::create(player, output), u"page-42"_s);
    QTimer::singleShot(parser.value(u"quit-after"_s).toInt() * 1000, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
