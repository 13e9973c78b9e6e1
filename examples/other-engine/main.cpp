// A host with its own kind of player. The clock plays, pauses, resumes and ends, and the library reports each event.
#include "ClockPlayer.h"

#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/Zelvano.h>

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"other-engine"_s);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"service"_s, u"Talk to the sandbox at <host:port>."_s, u"host:port"_s, u"127.0.0.1:8080"_s});
    parser.addOption({u"quit-after"_s, u"End after <seconds>."_s, u"seconds"_s, u"8"_s});
    parser.process(application);
    zelvano::useService(parser.value(u"service"_s));

    const auto player = zelvano::makeMainThreadShared<ClockPlayer>();
    const zelvano::AVURLAsset medium(QUrl(u"clock://some-medium"_s));
    player->replaceCurrentItemWithPlayerItem(zelvano::AVPlayerItem::create(medium));

    const auto engine = zelvano::Zelvano::create();
    engine->initializeWithAPIKey(u"your-api-key"_s);
    engine->setPlayer(player, u"page-42"_s);

    QTimer::singleShot(1s, player.get(), &ClockPlayer::play);
    QTimer::singleShot(2s, player.get(), &ClockPlayer::pause);
    QTimer::singleShot(3s, player.get(), &ClockPlayer::play);
    QObject::connect(player.get(), &ClockPlayer::rateChanged, &application, [clock = player.get()] {
        std::printf("%s at %.1f s\n", clock->rate() != 0 ? "plays" : "stands", clock->currentTime());
    });

    QTimer::singleShot(std::chrono::seconds(parser.value(u"quit-after"_s).toInt()), &application,
                       &QCoreApplication::quit);
    return QCoreApplication::exec();
}
