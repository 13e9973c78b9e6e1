// The time from a pause to a frame with the overlay's page, without the half second that a pause must last. The page is
// loaded in advance. The floor is one frame in which a plain item becomes visible, in the same run. The page, the web
// engine and the engine's calls are real; the player only reports play and pause. Prints one line of JSON.
// scripts/bench.sh runs it several times to measure the page's first showing.

#include "FakePlayer.h"
#include "Resources.h"
#include "Window.h"
#include "ZVAPIObject.h"
#include "ZVImageView.h"
#include <ZelvanoUI/Application.h>
#include <ZelvanoUI/Sandbox.h>
#include <ZelvanoUI/Service.h>
#include <ZelvanoUI/UserDefaults.h>
#include <ZelvanoUI/ZelvanoViewController.h>

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QQuickItem>
#include <QScreen>
#include <QTemporaryDir>
#include <QtWebEngineQuick/qtwebenginequickglobal.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace zelvano;
using namespace zelvano::bench;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr auto pauseDelay = 500ms;
constexpr int showings = 5;
constexpr auto rest = 200ms; // Deferred work after a change ends within this time.
constexpr QSizeF videoSize(400, 225);

class ScreenPlayer : public FakePlayer
{
public:
    explicit ScreenPlayer(QQuickItem *screen) : FakePlayer(u"http://videos.example/1.mp4"_s), m_screen(screen) {}
    QObject *view() const override { return m_screen; }
    QRectF videoBounds() const override { return {{}, videoSize}; }

private:
    QQuickItem *const m_screen;
};

void waitFor(std::chrono::milliseconds time)
{
    const auto end = Clock::now() + time;
    Window::waitUntil([end] { return Clock::now() >= end; });
}

/// The pixels of the page in the window, without the close button.
QImage picture(Window &window)
{
    return window.screen()->grabWindow(window.winId(), 60, 100, 120, 80).toImage();
}

/// Milliseconds from `since` to the first frame with other pixels than `before`. No frame is forced.
double waitForChange(Window &window, const QImage &before, Clock::time_point since)
{
    bool hasChanged = false;
    const auto look = [&] { hasChanged = hasChanged || (Clock::now() >= since && picture(window) != before); };
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, &window, look);
    Window::waitUntil([&] { return hasChanged; });
    QObject::disconnect(connection);
    return secondsSince(since) * 1e3;
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + showings / 2, values.end());
    return values[showings / 2];
}

/// A window with the view of a player, and with a plain item that is not visible yet.
struct Scene
{
    Scene()
    {
        screen.setParentItem(window.contentItem());
        screen.setSize(videoSize);
        QImage colour(1, 1, QImage::Format_RGB32);
        colour.fill(Qt::red);
        plain.setParentItem(window.contentItem());
        plain.setSize(videoSize);
        plain.setVisible(false);
        plain.setImage(colour);
    }

    Window window;
    QQuickItem screen;
    ZVImageView plain;
};

/// Milliseconds from the end of the pause's half second to the overlay.
double showOverlay(Scene &scene, ScreenPlayer &player)
{
    player.play();
    waitFor(rest);
    const auto before = picture(scene.window);
    const auto pause = Clock::now();
    player.pause();
    const double milliseconds = waitForChange(scene.window, before, pause + pauseDelay);
    player.play();
    waitFor(rest);
    return milliseconds;
}

double showPlainItem(Scene &scene)
{
    const auto before = picture(scene.window);
    const auto begin = Clock::now();
    scene.plain.setVisible(true);
    const double milliseconds = waitForChange(scene.window, before, begin);
    scene.plain.setVisible(false);
    waitFor(rest);
    return milliseconds;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    if (geteuid() == 0)
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1"); // Chromium refuses to run as root with its sandbox on.
    QLoggingCategory::setFilterRules(u"zelvano*=false\nqt.webenginecontext=false"_s);
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);

    sandbox::Sandbox service;
    if (!service.start())
        qFatal("no port for the service");
    const QTemporaryDir folder;
    UserDefaults::standard().setFilePath(folder.filePath(u"defaults.json"_s));
    useService(service.url().authority());

    Scene scene;
    Application::shared().setKeyWindow(&scene.window);
    const auto player = std::make_shared<ScreenPlayer>(&scene.screen);
    auto controller = ZelvanoViewController::create(u"benchmark-key"_s);
    controller->setPlayer(player, u"page"_s);
    player->becomeReady();
    Window::waitUntil([&] { return !controller->videoList().empty(); });
    Window::waitUntil([&] { return controller->webView()->isReady(); });

    const double first = showOverlay(scene, *player);
    std::vector<double> further, floor;
    for (int i = 0; i < showings; ++i) {
        further.push_back(showOverlay(scene, *player));
        floor.push_back(showPlainItem(scene));
    }
    std::printf("{\"first_ms\": %g, \"further_ms\": %g, \"frame_ms\": %g}\n", first, median(further), median(floor));
    controller->dismiss();
    controller.reset();
    ZVAPIObject::stopAllSessions();
    return 0;
}
