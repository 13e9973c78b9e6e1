#include <ZelvanoUI/Device.h>

#include "Immortal.h"
#include <ZelvanoUI/NotificationCenter.h>

#include <QGuiApplication>
#include <QScreen>
#include <QSysInfo>

#include <cmath>
#include <utility>

namespace zelvano {

namespace {

UIDeviceOrientation orientationOf(const QScreen &screen)
{
    // A screen without a sensor says "primary": then its shape tells.
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
    constexpr double smallestPad = 7 * 25.4; // Millimetres across.
    const auto size = screen.physicalSize();
    return std::hypot(size.width(), size.height()) >= smallestPad ? UIUserInterfaceIdiom::Pad
                                                                  : UIUserInterfaceIdiom::Phone;
}

} // namespace

Device::Device() : m_systemVersion(QSysInfo::productVersion())
{
    if (m_systemVersion == QLatin1StringView("unknown"))
        m_systemVersion.clear();
}

Device &Device::current()
{
    return immortal<Device>();
}

void Device::followScreen()
{
    auto *screen =
        qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ? QGuiApplication::primaryScreen() : nullptr;
    if (!screen || m_followedScreen)
        return;
    m_followedScreen = screen;
    const auto follow = [this, screen] {
        if (!m_orientationIsHosts)
            applyOrientation(orientationOf(*screen));
    };
    QObject::connect(screen, &QScreen::orientationChanged, screen, follow);
    QObject::connect(screen, &QScreen::primaryOrientationChanged, screen, follow);
    const QMutexLocker lock(&m_mutex);
    m_screensIdiom = idiomOf(*screen);
    if (!m_orientationIsHosts)
        m_orientation = orientationOf(*screen);
}

UIUserInterfaceIdiom Device::userInterfaceIdiom() const
{
    const QMutexLocker lock(&m_mutex);
    return m_hostsIdiom.value_or(m_screensIdiom);
}

QString Device::systemVersion() const
{
    const QMutexLocker lock(&m_mutex);
    return m_systemVersion;
}

UIDeviceOrientation Device::orientation() const
{
    const QMutexLocker lock(&m_mutex);
    return m_orientation;
}

void Device::setUserInterfaceIdiom(UIUserInterfaceIdiom idiom)
{
    const QMutexLocker lock(&m_mutex);
    m_hostsIdiom = idiom;
}

void Device::setSystemVersion(const QString &version)
{
    const QMutexLocker lock(&m_mutex);
    m_systemVersion = version;
}

void Device::setOrientation(UIDeviceOrientation orientation)
{
    m_orientationIsHosts = true;
    applyOrientation(orientation);
}

void Device::applyOrientation(UIDeviceOrientation orientation)
{
    {
        const QMutexLocker lock(&m_mutex);
        if (std::exchange(m_orientation, orientation) == orientation)
            return;
    }
    NotificationCenter::defaultCenter().post({UIDeviceOrientationDidChangeNotification, {}, {}});
}

} // namespace zelvano
