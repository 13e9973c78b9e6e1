#include <ZelvanoUI/Application.h>

#include "Immortal.h"

#include <QGuiApplication>
#include <QPointer>

#include <utility>

namespace zelvano {

struct Application::Private
{
    QPointer<QWindow> keyWindow;
    std::function<bool()> transitionQuery;
};

Application::Application() : d(std::make_unique<Private>()) {}

Application &Application::shared()
{
    return immortal<Application>();
}

QWindow *Application::keyWindow() const
{
    return d->keyWindow ? d->keyWindow.data() : QGuiApplication::focusWindow();
}

QList<QWindow *> Application::windows() const
{
    return QGuiApplication::topLevelWindows();
}

void Application::setKeyWindow(QWindow *window)
{
    d->keyWindow = window;
}

bool Application::isTransitionInFront() const
{
    return d->transitionQuery && d->transitionQuery();
}

void Application::setTransitionQuery(std::function<bool()> query)
{
    d->transitionQuery = std::move(query);
}

} // namespace zelvano
