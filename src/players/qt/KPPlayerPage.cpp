#include "KPPlayerPage.h"

#include "WebEngine.h"

#include <QJSValue>
#include <QTimer>

#include <cmath>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostEvaluations = 32;

/// QML may pass one of its own values.
QVariant plain(const QVariant &value)
{
    return value.canConvert<QJSValue>() ? value.value<QJSValue>().toVariant() : value;
}

template<class Task> void later(KPPlayerPage *page, Task task)
{
    QMetaObject::invokeMethod(page, std::move(task), Qt::QueuedConnection);
}

} // namespace

KPPlayerPage::KPPlayerPage(const QUrl &url) : m_url(url)
{
    if (!canShowWebPages())
        return;
    m_content = std::make_unique<InterfaceResource>(u"KPViewController"_s, this);
    m_view = std::make_unique<VideoView>(m_content->root());
    connect(m_view.get(), &VideoView::frameChanged, this, &KPPlayerPage::frameChanged);
    if (auto *web = webView()) {
        protectHost(web);
        web->setProperty("url", url);
    }
}

KPPlayerPage::~KPPlayerPage() = default;

QQuickItem *KPPlayerPage::webView() const
{
    return m_content ? m_content->outlet(u"webView"_s) : nullptr;
}

// Towards the page

void KPPlayerPage::call(const QString &function, const QVariantList &arguments)
{
    if (m_content && m_content->root()) {
        QMetaObject::invokeMethod(m_content->root(), "call", Q_ARG(QVariant, function),
                                  Q_ARG(QVariant, QVariant(arguments)));
    }
}

void KPPlayerPage::evaluate(const QString &expression, const KPHandler &handler)
{
    if (!m_content || !m_content->root())
        return;
    if (m_evaluations.size() == mostEvaluations)
        m_evaluations.erase(m_evaluations.begin());
    m_evaluations.insert(++m_lastEvaluation, handler);
    QMetaObject::invokeMethod(m_content->root(), "evaluate", Q_ARG(QVariant, expression),
                              Q_ARG(QVariant, m_lastEvaluation));
}

// From the page

void KPPlayerPage::mediaDidChange(const QVariantMap &media)
{
    later(this, [this, media] { setMedia(media); });
}

void KPPlayerPage::loadStateDidChange(int state)
{
    later(this, [this, state] { Q_EMIT loadStateChanged(state); });
}

void KPPlayerPage::playbackStateDidChange(int state)
{
    later(this, [this, state] { Q_EMIT playbackStateChanged(state); });
}

void KPPlayerPage::eventDidFire(const QString &event, const QVariant &params)
{
    later(this, [this, event, value = plain(params)] {
        const auto listeners = m_listeners; // A handler may add another, and end the player.
        for (const auto &[awaited, handler] : listeners) {
            if (awaited == event)
                handler(value);
        }
    });
}

void KPPlayerPage::expressionDidEvaluate(int call, const QVariant &value)
{
    later(this, [handler = m_evaluations.take(call), value = plain(value)] {
        if (handler)
            handler(value);
    });
}

void KPPlayerPage::rendererDidEnd(int status, int exitCode)
{
    logRendererEnd(status, exitCode);
    m_evaluations.clear();
    QTimer::singleShot(reloadDelay, this, [this] {
        if (auto *web = webView())
            web->setProperty("url", m_url);
    });
}

void KPPlayerPage::setMedia(const QVariantMap &media)
{
    m_media = {};
    bool isNumber = false;
    if (const double duration = media.value(u"duration"_s).toDouble(&isNumber); isNumber && duration > 0)
        m_media.duration = duration;
    if (const double time = media.value(u"currentTime"_s).toDouble(); std::isfinite(time))
        m_media.currentTime = time;
    m_media.entryId = media.value(u"entryId"_s).toString();
    m_media.pictureSize = {media.value(u"videoWidth"_s).toDouble(), media.value(u"videoHeight"_s).toDouble()};
    m_media.isPaused = media.value(u"paused"_s, true).toBool();
    Q_EMIT mediaChanged();
}

} // namespace zelvano

#include "moc_KPPlayerPage.cpp"
