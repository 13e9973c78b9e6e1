#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QLatin1StringView>
#include <QMutex>
#include <QPointer>
#include <QString>

#include <optional>

namespace zelvano {

/// Posted on the notification centre when the device was turned; its object is absent.
inline constexpr QLatin1StringView UIDeviceOrientationDidChangeNotification{"UIDeviceOrientationDidChangeNotification"};

enum class UIUserInterfaceIdiom { Unspecified = -1, Phone = 0, Pad = 1 };

enum class UIDeviceOrientation {
    Unknown = 0,
    Portrait = 1,
    PortraitUpsideDown = 2,
    LandscapeLeft = 3,
    LandscapeRight = 4,
    FaceUp = 5,
    FaceDown = 6,
};

constexpr bool isPortrait(UIDeviceOrientation orientation)
{
    return orientation == UIDeviceOrientation::Portrait || orientation == UIDeviceOrientation::PortraitUpsideDown;
}

constexpr bool isLandscape(UIDeviceOrientation orientation)
{
    return orientation == UIDeviceOrientation::LandscapeLeft || orientation == UIDeviceOrientation::LandscapeRight;
}

/// The machine that the host runs on. Read from any thread; what a host sets wins over what the system says.
class ZELVANOCORE_EXPORT Device
{
public:
    static Device &current();

    /// Reads the screen, once a QGuiApplication exists, and follows its orientation. Main thread; the engine calls it
    /// when it starts. Until then, and in a host without a screen, idiom and orientation are unspecified.
    void followScreen();

    /// Of the primary screen: 7 inches and more across is a pad.
    UIUserInterfaceIdiom userInterfaceIdiom() const;
    /// Such as "12" or "22.04"; empty when the system has none.
    QString systemVersion() const;
    UIDeviceOrientation orientation() const;

    void setUserInterfaceIdiom(UIUserInterfaceIdiom idiom);
    void setSystemVersion(const QString &version);
    /// From here on the host says how the device is held. A change posts the notification. Main thread.
    void setOrientation(UIDeviceOrientation orientation);

private:
    template<class T> friend T &immortal();
    Device();
    ~Device() = delete;

    void applyOrientation(UIDeviceOrientation orientation);

    mutable QMutex m_mutex;
    QPointer<QObject> m_followedScreen;
    bool m_orientationIsHosts = false;
    std::optional<UIUserInterfaceIdiom> m_hostsIdiom;
    UIUserInterfaceIdiom m_screensIdiom = UIUserInterfaceIdiom::Unspecified;
    QString m_systemVersion;
    UIDeviceOrientation m_orientation = UIDeviceOrientation::Unknown;
};

} // namespace zelvano
