// A host without a window. It prints the recommended videos and the events of the player.
#include "ShortPlayer.h"

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/Zelvano.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

class Printer : public zelvano::ZelvanoPrivateDelegate
{
    using Engine = std::shared_ptr<zelvano::Zelvano>;
    using Player = std::shared_ptr<QObject>;
    using Recommendation = std::shared_ptr<zelvano::ZVRecommendation>;

    void suggestionsDidFetched(const Engine &, const Player &, const Recommendation &recommendation) override
    {
        for (const auto &video : recommendation->videoList())
            std::printf("recommended: %s\n", qUtf8Printable(video->title()));
    }
    void stateDidChanged(const Engine &, const Player &, const QString &state) override
    {
        std::printf("event: %s\n", qUtf8Printable(state));
    }
    void addRecommendationToView(const Engine &, const Player &, QObject *, QSizeF) override {}
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"engine-only"_s);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"service"_s, u"Talk to the sandbox at <host:port>."_s, u"host:port"_s, u"127.0.0.1:8080"_s});
    parser.addOption({u"quit-after"_s, u"End after <seconds>."_s, u"seconds"_s, u"6"_s});
    parser.process(application);
    zelvano::useService(parser.value(u"service"_s));

    const auto player = zelvano::makeMainThreadShared<ShortPlayer>();
    const zelvano::AVURLAsset medium(QUrl(u"http://media.example/1.mp4"_s));
    player->replaceCurrentItemWithPlayerItem(zelvano::AVPlayerItem::create(medium));

    // [attach]
    const auto engine = zelvano::Zelvano::create();
    engine->initializeWithAPIKey(u"your-api-key"_s);
    engine->addListener(std::make_shared<Printer>());
    engine->setPlayer(player, u"page-42"_s);
    // [attach]
    player->play();

    QTimer::singleShot(std::chrono::seconds(parser.value(u"quit-after"_s).toInt()), &application,
                       &QCoreApplication::quit);
    return QCoreApplication::exec();
}
