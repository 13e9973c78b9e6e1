#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QQuickWindow>
#include <QTimer>

#include <chrono>

namespace zelvano::bench {

inline constexpr QSize windowSize(400, 720);

/// A window on the screen, and functions that wait for its frames.
class Window : public QQuickWindow
{
public:
    Window()
    {
        resize(windowSize);
        show();
        waitForFrame();
    }

    /// Waits for a frame that contains all changes up to now.
    void waitForFrame()
    {
        waitForFrame([] { return true; });
    }

    /// Waits for a frame at whose end the predicate holds. After the first, only changes cause frames: in a view that
    /// waits for its pictures, further ones would cost CPU time that is not the view's.
    template<class Predicate> void waitForFrame(Predicate predicate)
    {
        bool holds = false;
        const auto look = [&] { holds = holds || predicate(); };
        const auto connection = connect(this, &QQuickWindow::frameSwapped, this, look);
        update();
        waitUntil([&] { return holds; });
        disconnect(connection);
    }

    /// Lets the event loop sleep when idle, so that other threads get the core.
    template<class Predicate> static void waitUntil(Predicate predicate)
    {
        QTimer patience; // Wakes the loop if nothing else does.
        patience.start(std::chrono::seconds(1));
        const QDeadlineTimer deadline(std::chrono::seconds(60));
        while (!predicate()) {
            if (deadline.hasExpired())
                qFatal("waited too long");
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
};

/// Call before the application object exists: draws into memory, without a delay before a frame.
inline void drawIntoMemory()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
}

} // namespace zelvano::bench
