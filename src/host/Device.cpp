#include <ZelvanoUI/Device.h>

#include "Immortal.h"
#include <ZelvanoUI/NotificationCenter.h>

#include <QGuiApplication>
#include <QMutex>
#include <QPointer>
#include <QScreen>
#include <QSysInfo>

#include <cmath>
#include <optional>
#include <utility>

namespace zelvano {

namespace {

UIDeviceOrientation orientationOf(const QScreen &screen)
{
    // A screen without a sensor reports "primary". Then its shape decides.
    const auto turned = screen.orientation();
    switch (turned == Qt::PrimaryOrientation ? screen.primaryOrientation() : turned) {
    case Qt::PortraitOrientation:
        return UIDeviceOrientation::Portrait;
    case Qt::InvertedPortraitOrientation:
        return UIDeviceOrientation::PortraitUpsideDown;
    case Qt::LandscapeOrientation:
        return UIDeviceOrientation::LandscapeLeft;
    case Qt::InvertedLandscapeOrientation:
        return UIDeviceOrientation::LandscapeRight;
    case Qt::PrimaryOrientation:
        break;
    }
    return UIDeviceOrientation::Unknown;
}

UIUserInterfaceIdiom idiomOf(const QScreen &screen)
{
    constexpr double smallestPad = 7 * 25.4; // Millimetres, diagonally.
    const auto size = screen.physicalSize();
    return std::hypot(size.width(), size.height()) >= smallestPad ? UIUserInterfaceIdiom::Pad
                                                                  : UIUserInterfaceIdiom::Phone;
}

} // namespace

/// The mutex guards what getters read. The rest belongs to the main thread.
struct Device::Private
{
    mutable QMutex mutex;
    QPointer<QScreen> followedScreen;
    bool hostSetsOrientation = false;
    std::optional<UIUserInterfaceIdiom> idiomOfHost;
    UIUserInterfaceIdiom idiomOfScreen = UIUserInterfaceIdiom::Unspecified;
    QString systemVersion = QSysInfo::productVersion();
    UIDeviceOrientation orientation = UIDeviceOrientation::Unknown;

    void changeOrientation(UIDeviceOrientation changed)
    {
        {
            const QMutexLocker lock(&mutex);
            if (std::exchange(orientation, changed) == changed)
                return;
        }
        NotificationCenter::defaultCenter().post({UIDeviceOrientationDidChangeNotification, {}, {}});
    }
};

Device::Device() : d(std::make_unique<Private>())
{
    if (d->systemVersion == QLatin1StringView("unknown"))
        d->systemVersion.clear();
}

Device &Device::current()
{
    return immortal<Device>();
}

void Device::followScreen()
{
    auto *screen =
        qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ? QGuiApplication::primaryScreen() : nullptr;
    if (!screen || d->followedScreen)
        return;
    d->followedScreen = screen;
    const auto follow = [this, screen] {
        if (!d->hostSetsOrientation)
            d->changeOrientation(orientationOf(*screen));
    };
    QObject::connect(screen, &QScreen::orientationChanged, screen, follow);
    QObject::connect(screen, &QScreen::primaryOrientationChanged, screen, follow);
    const QMutexLocker lock(&d->mutex);
    d->idiomOfScreen = idiomOf(*screen);
    if (!d->hostSetsOrientation)
        d->orientation = orientationOf(*screen);
}

UIUserInterfaceIdiom Device::userInterfaceIdiom() const
{
    const QMutexLocker lock(&d->mutex);
    return d->idiomOfHost.value_or(d->idiomOfScreen);
}

QString Device::systemVersion() const
{
    const QMutexLocker lock(&d->mutex);
    return d->systemVersion;
}

UIDeviceOrientation Device::orientation() const
{
    const QMutexLocker lock(&d->mutex);
    return d->orientation;
}

void Device::setUserInterfaceIdiom(UIUserInterfaceIdiom idiom)
{
    const QMutexLocker lock(&d->mutex);
    d->idiomOfHost = idiom;
}

void Device::setSystemVersion(const QString &version)
{
    const QMutexLocker lock(&d->mutex);
    d->systemVersion = version;
}

void Device::setOrientation(UIDeviceOrientation orientation)
{
    d->hostSetsOrientation = true;
    d->changeOrientation(orientation);
}

} // namespace zelvano
