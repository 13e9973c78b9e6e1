#include "Input.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QQuickWindow>
#include <QTimer>

#include <vector>

namespace demo {

namespace {

constexpr int pauseBetween = 30; // Milliseconds.

struct Step
{
    QEvent::Type type;
    QPointF point;
};

void sendStep(QQuickWindow *window, const Step &step)
{
    const bool isMove = step.type == QEvent::MouseMove;
    const auto button = isMove ? Qt::NoButton : Qt::LeftButton;
    const auto buttons = step.type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(step.type, step.point, window->mapToGlobal(step.point), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
}

void sendSteps(const QPointer<QQuickWindow> &window, const std::vector<Step> &steps, std::size_t at,
               const std::function<void()> &done)
{
    if (!window || at == steps.size()) {
        done();
        return;
    }
    sendStep(window, steps[at]);
    QTimer::singleShot(pauseBetween, [=] { sendSteps(window, steps, at + 1, done); });
}

} // namespace

void tapAt(QQuickWindow *window, QPointF point, std::function<void()> done)
{
    sendSteps(window, {{QEvent::MouseButtonPress, point}, {QEvent::MouseButtonRelease, point}}, 0, done);
}

void dragFrom(QQuickWindow *window, QPointF from, QPointF to, std::function<void()> done)
{
    constexpr int moves = 6;
    std::vector<Step> steps{{QEvent::MouseButtonPress, from}};
    for (int i = 1; i <= moves; ++i)
        steps.push_back({QEvent::MouseMove, from + (to - from) * i / moves});
    steps.push_back({QEvent::MouseButtonRelease, to});
    sendSteps(window, steps, 0, done);
}

} // namespace demo
