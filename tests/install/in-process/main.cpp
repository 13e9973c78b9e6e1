// A host that starts the service in its own process, as its tests would. It succeeds once a thumbnail has arrived.
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/ZVImagesFetcher.h>

#include <QCoreApplication>

#include <cstdlib>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    zelvano::sandbox::Sandbox sandbox;
    sandbox.setScenario(zelvano::sandbox::Scenario::OneVideo);
    if (!sandbox.start())
        return 2;
    zelvano::useService(sandbox.url().authority());
    const QUrl thumbnail(QStringLiteral("http://api.zelvano.example/thumbnails/1.jpg"));
    zelvano::ZVImagesFetcher::fetchImageAtURL(
        thumbnail, [](const QImage &image, const auto &) { std::_Exit(image.isNull() ? 3 : 0); });
    return QCoreApplication::exec();
}
