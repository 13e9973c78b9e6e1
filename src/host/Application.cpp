#include <ZelvanoUI/Application.h>

#include "Immortal.h"

#include <QGuiApplication>

#include <utility>

namespace zelvano {

Application &Application::shared()
{
    return immortal<Application>();
}

QWindow *Application::keyWindow() const
{
    return m_keyWindow ? m_keyWindow.data() : QGuiApplication::focusWindow();
}

QList<QWindow *> Application::windows() const
{
    return QGuiApplication::topLevelWindows();
}

void Application::setKeyWindow(QWindow *window)
{
    m_keyWindow = window;
}

bool Application::isTransitionInFront() const
{
    return m_transitionQuery && m_transitionQuery();
}

void Application::setTransitionQuery(std::function<bool()> query)
{
    m_transitionQuery = std::move(query);
}

} // namespace zelvano
