#include <ZelvanoUI/QtKPViewController.h>

#include "InterfaceResource.h"
#include "WebEngine.h"
#include <ZelvanoUI/MainThread.h>

#include <QJSValue>

#include <cmath>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// As C++ has it: what QML hands over may be one of its own values.
QVariant plain(const QVariant &value)
{
    return value.canConvert<QJSValue>() ? value.value<QJSValue>().toVariant() : value;
}

} // namespace

QtKPViewController::QtKPViewController() = default;
QtKPViewController::~QtKPViewController() = default;

std::shared_ptr<QtKPViewController> QtKPViewController::create(const QUrl &page)
{
    std::shared_ptr<QtKPViewController> player(new QtKPViewController, MainThreadDeleter{});
    player->show(page);
    return player;
}

void QtKPViewController::show(const QUrl &page)
{
    if (!canShowWebPages())
        return;
    m_content = std::make_unique<InterfaceResource>(u"KPViewController"_s, this);
    m_view = std::make_unique<VideoView>(m_content->root());
    connect(m_view.get(), &VideoView::frameChanged, this, &Player::frameChanged);
    if (auto *web = webView())
        web->setProperty("url", page);
}

QObject *QtKPViewController::view() const
{
    return m_view ? m_view->item() : nullptr;
}

QQuickItem *QtKPViewController::webView() const
{
    return m_content ? m_content->outlet(u"webView"_s) : nullptr;
}

QRectF QtKPViewController::videoBounds() const
{
    const auto *item = m_view ? m_view->item() : nullptr;
    if (!item || m_pictureSize.isEmpty())
        return {};
    QRectF bounds({}, m_pictureSize.scaled(item->size(), Qt::KeepAspectRatio));
    bounds.moveCenter(QRectF({}, item->size()).center());
    return bounds;
}

// Towards the page

/// A function of the page's player. The interface resource makes script text of it.
void QtKPViewController::call(const QString &function, const QVariantList &arguments)
{
    if (m_content && m_content->root())
        QMetaObject::invokeMethod(m_content->root(), "call", Q_ARG(QVariant, function),
                                  Q_ARG(QVariant, QVariant(arguments)));
}

void QtKPViewController::play()
{
    call(u"play"_s, {});
}

void QtKPViewController::pause()
{
    call(u"pause"_s, {});
}

void QtKPViewController::seek(double seconds)
{
    call(u"seek"_s, {seconds});
}

void QtKPViewController::changeMedia(const QString &entryId)
{
    call(u"changeMedia"_s, {entryId});
}

void QtKPViewController::sendNotification(const QString &name, const QVariant &params)
{
    call(u"sendNotification"_s, {name, params});
}

void QtKPViewController::addKPlayerEventListener(const QString &event, const QString &, const KPHandler &handler)
{
    m_listeners.push_back({event, handler});
}

void QtKPViewController::asyncEvaluate(const QString &expression, const QString &, const KPHandler &handler)
{
    if (!m_content || !m_content->root())
        return;
    m_evaluations.insert(++m_lastEvaluation, handler);
    QMetaObject::invokeMethod(m_content->root(), "evaluate", Q_ARG(QVariant, expression),
                              Q_ARG(QVariant, m_lastEvaluation));
}

// From the page. All of it later, in order: a host may drop the player from inside what it is told, and with it the
// page that is telling.

template<class Task> void QtKPViewController::later(Task task)
{
    QMetaObject::invokeMethod(this, std::move(task), Qt::QueuedConnection);
}

void QtKPViewController::mediaDidChange(const QVariantMap &media)
{
    later([this, media] { setMedia(media); });
}

void QtKPViewController::loadStateDidChange(int state)
{
    later([this, state] { tellLoadState(state); });
}

void QtKPViewController::playbackStateDidChange(int state)
{
    later([this, state] { tellPlaybackState(state); });
}

void QtKPViewController::eventDidFire(const QString &event, const QVariant &params)
{
    later([this, event, value = plain(params)] {
        const auto listeners = m_listeners; // A handler may add another, and end the player.
        for (const auto &listener : listeners) {
            if (listener.event == event)
                listener.handler(value);
        }
    });
}

void QtKPViewController::expressionDidEvaluate(int call, const QVariant &value)
{
    later([handler = m_evaluations.take(call), value = plain(value)] {
        if (handler)
            handler(value);
    });
}

void QtKPViewController::setMedia(const QVariantMap &media)
{
    bool isNumber = false;
    const double duration = media.value(u"duration"_s).toDouble(&isNumber);
    m_duration = isNumber && duration > 0 ? duration : std::numeric_limits<double>::quiet_NaN();
    const double time = media.value(u"currentTime"_s).toDouble();
    m_currentTime = std::isfinite(time) ? time : 0;
    m_entryId = media.value(u"entryId"_s).toString();
    m_pictureSize = {media.value(u"videoWidth"_s).toDouble(), media.value(u"videoHeight"_s).toDouble()};
    m_isPaused = media.value(u"paused"_s, true).toBool();
    Q_EMIT mediaChanged();
}

} // namespace zelvano
