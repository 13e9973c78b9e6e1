#pragma once

#include "MainQueue.h"

#include <QAccessible>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMetaEnum>
#include <QPointingDevice>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>
#include <QtWebEngineQuick>

#include <chrono>
#include <memory>

/// The main function of a test program with a window system and the web engine.
template<class Test> int runUiTest(int argc, char **argv)
{
    // GStreamer needs up to a second to stop a player.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    QLoggingCategory::setFilterRules(QStringLiteral("qt.webenginecontext=false"));
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define UI_TEST_MAIN(Test)                                                                                             \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        return runUiTest<Test>(argc, argv);                                                                            \
    }

/// Runs an event loop until the predicate holds. Web pages load at full speed in it, unlike in QTest::qWaitFor.
template<class Predicate>
bool waitUntil(Predicate predicate, std::chrono::milliseconds longest = std::chrono::seconds(10))
{
    const QDeadlineTimer deadline(longest);
    bool holds = predicate();
    if (holds)
        return true;
    QEventLoop loop;
    QTimer poll;
    poll.callOnTimeout(&loop, [&] {
        holds = predicate();
        if (holds || deadline.hasExpired())
            loop.quit();
    });
    poll.start(std::chrono::milliseconds(2));
    loop.exec();
    return holds;
}

/// Runs the tasks that the main queue holds now.
inline bool flushMainQueue()
{
    const auto done = std::make_shared<bool>(false);
    zelvano::MainQueue::shared().post([done] { *done = true; });
    return waitUntil([done] { return *done; });
}

inline QPoint centreOf(const QQuickItem *item)
{
    return item->mapToScene({item->width() / 2, item->height() / 2}).toPoint();
}

/// The accessible role and name of an item.
inline QString spoken(QObject *item)
{
    const auto *interface = QAccessible::queryAccessibleInterface(item);
    const auto *role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(interface->role());
    return QLatin1StringView(role) + QStringLiteral(": ") + interface->text(QAccessible::Name);
}

inline void pressByScreenReader(QObject *item)
{
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

/// An item of the host: "Item { ... }".
inline std::unique_ptr<QQuickItem> qmlItem(QQmlEngine &engine, const QByteArray &item)
{
    QQmlComponent component(&engine);
    component.setData("import QtQuick\n" + item, {});
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem *>(component.create()));
}
constexpr auto mirroringItem = "Item { LayoutMirroring.enabled: true; LayoutMirroring.childrenInherit: true }";

/// An item of the host that accepts and counts all input.
class HostItem : public QQuickItem
{
public:
    explicit HostItem(QQuickItem *parent = nullptr) : QQuickItem(parent)
    {
        setAcceptedMouseButtons(Qt::AllButtons);
        setAcceptTouchEvents(true);
    }

    int presses = 0; ///< Of a mouse or a finger.
    QList<int> keys;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void touchEvent(QTouchEvent *event) override { presses += event->isBeginEvent() ? 1 : 0; }
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};

/// A visible window with the keyboard focus.
class HostWindow : public QQuickWindow
{
public:
    explicit HostWindow(QSize size = {800, 600})
    {
        // Qt gives these warnings when it loads the web engine, some only from 6.8 on, and without a sound server.
        QTest::failOnWarning(QRegularExpression(
            QStringLiteral("^(?!QWebEngine\\w+ is neither a QObject|No suitable graphics backend|QRhiGles2: Failed|"
                           "QVulkanInstance: Failed|This plugin does not support createPlatformVulkan|"
                           "Unable to detect GPU vendor|PulseAudioService: pa_)")));
        resize(size);
        below.setParentItem(contentItem());
        below.setSize(size);
    }
    bool appear()
    {
        show();
        requestActivate();
        below.forceActiveFocus();
        return waitUntil([this] { return isExposed() && isActive() && below.hasActiveFocus(); });
    }

    HostItem below;
};

enum class Pointer { Mouse, Touch };

/// A press, a straight movement in small steps, and a release.
inline void drag(QWindow &window, Pointer pointer, QPoint from, QPoint way)
{
    static auto *const touchScreen = QTest::createTouchDevice();
    const int steps = way.isNull() ? 0 : 8;
    if (pointer == Pointer::Mouse) {
        QTest::mousePress(&window, Qt::LeftButton, {}, from);
        for (int step = 1; step <= steps; ++step)
            QTest::mouseMove(&window, from + way * step / steps);
        QTest::mouseRelease(&window, Qt::LeftButton, {}, from + way);
    } else {
        QTest::touchEvent(&window, touchScreen).press(0, from);
        for (int step = 1; step <= steps; ++step)
            QTest::touchEvent(&window, touchScreen).move(0, from + way * step / steps);
        QTest::touchEvent(&window, touchScreen).release(0, from + way);
    }
}

inline void tap(QWindow &window, Pointer pointer, QPoint at)
{
    drag(window, pointer, at, {});
}

/// Four notches towards the viewer.
inline void turnWheel(QWindow &window, QPoint at)
{
    QWheelEvent wheel(at, at, {0, -480}, {0, -480}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window, &wheel);
}
