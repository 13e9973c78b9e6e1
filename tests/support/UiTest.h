#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>
#include <QtWebEngineQuick>

#include <chrono>

/// The main function of a test program that needs a window system and the web engine.
template<class Test> int runUiTest(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    QLoggingCategory::setFilterRules(QStringLiteral("qt.webenginecontext=false"));
    QtWebEngineQuick::initialize();
    QGuiApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

/// Runs an event loop until the predicate holds: web pages load at full speed inside one, unlike in QTest::qWaitFor.
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

/// An item of the host's that takes all input it gets, and counts it.
class HostItem : public QQuickItem
{
public:
    explicit HostItem(QQuickItem *parent = nullptr) : QQuickItem(parent)
    {
        setAcceptedMouseButtons(Qt::AllButtons);
        setAcceptTouchEvents(true);
    }

    int presses = 0;
    int touches = 0;
    QList<int> keys;

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void touchEvent(QTouchEvent *event) override { touches += event->isBeginEvent() ? 1 : 0; }
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};

/// A window that is on the screen and has the keyboard.
class HostWindow : public QQuickWindow
{
public:
    explicit HostWindow(QSize size = {800, 600})
    {
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
Q_DECLARE_METATYPE(Pointer)

inline QPointingDevice *touchScreen()
{
    static auto *const device = QTest::createTouchDevice();
    return device;
}

inline void press(QWindow &window, Pointer pointer, QPoint at)
{
    if (pointer == Pointer::Mouse)
        QTest::mousePress(&window, Qt::LeftButton, {}, at);
    else
        QTest::touchEvent(&window, touchScreen()).press(0, at);
}

inline void move(QWindow &window, Pointer pointer, QPoint to)
{
    if (pointer == Pointer::Mouse)
        QTest::mouseMove(&window, to);
    else
        QTest::touchEvent(&window, touchScreen()).move(0, to);
}

inline void release(QWindow &window, Pointer pointer, QPoint at)
{
    if (pointer == Pointer::Mouse)
        QTest::mouseRelease(&window, Qt::LeftButton, {}, at);
    else
        QTest::touchEvent(&window, touchScreen()).release(0, at);
}

inline void tap(QWindow &window, Pointer pointer, QPoint at)
{
    press(window, pointer, at);
    release(window, pointer, at);
}

/// A press, a straight way in small steps, a release.
inline void drag(QWindow &window, Pointer pointer, QPoint from, QPoint way)
{
    constexpr int steps = 8;
    press(window, pointer, from);
    for (int step = 1; step <= steps; ++step)
        move(window, pointer, from + way * step / steps);
    release(window, pointer, from + way);
}
