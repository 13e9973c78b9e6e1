#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QQuickWindow>
#include <QTimer>

#include <chrono>

namespace zelvano::bench {

inline constexpr QSize windowSize(400, 720);

/// A window on the screen, and a wait for what it draws.
class Window : public QQuickWindow
{
public:
    Window()
    {
        resize(windowSize);
        show();
        waitForFrame();
    }

    /// Draws, at the earliest what is asked for now.
    void waitForFrame()
    {
        waitForFrame([] { return true; });
    }

    /// Draws again and again, until the predicate holds at the end of a frame.
    template<class Predicate> void waitForFrame(Predicate predicate)
    {
        bool holds = false;
        const auto look = [&] {
            holds = holds || predicate();
            if (!holds)
                update();
        };
        const auto connection = connect(this, &QQuickWindow::frameSwapped, this, look);
        update();
        waitUntil([&] { return holds; });
        disconnect(connection);
    }

    /// The event loop sleeps where there is nothing to do: other threads have the core.
    template<class Predicate> static void waitUntil(Predicate predicate)
    {
        QTimer patience; // What never comes must not keep the loop asleep.
        patience.start(std::chrono::seconds(1));
        const QDeadlineTimer deadline(std::chrono::seconds(60));
        while (!predicate()) {
            if (deadline.hasExpired())
                qFatal("waited too long");
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
};

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// Before the application object: draws into memory, without a pause before a frame.
inline void drawIntoMemory()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
}

} // namespace zelvano::bench
