#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QLatin1StringView>
#include <QString>

#include <memory>

namespace zelvano {

/// Posted to the notification centre when the orientation changes. Its object is absent.
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

/// The machine that the host runs on. A value that the host sets overrides the system's. Getters: any thread.
class ZELVANOCORE_EXPORT Device
{
public:
    static Device &current();

    /// Reads the primary screen and follows its orientation. Without a QGuiApplication it does nothing: idiom and
    /// orientation stay unspecified. Main thread; the engine calls it when it starts.
    void followScreen();

    /// Pad for a primary screen of 7 inches or more across, else phone.
    UIUserInterfaceIdiom userInterfaceIdiom() const;
    /// Such as "12" or "22.04". Empty when the system has none.
    QString systemVersion() const;
    UIDeviceOrientation orientation() const;

    void setUserInterfaceIdiom(UIUserInterfaceIdiom idiom);
    void setSystemVersion(const QString &version);
    /// A change posts the notification. The screen's orientation is ignored from then on. Main thread.
    void setOrientation(UIDeviceOrientation orientation);

private:
    template<class T> friend T &immortal();
    Device();
    ~Device() = delete;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
