#include "KalturaPlayer.h"

#include <ZelvanoUI/NotificationCenter.h>
#include <ZelvanoUI/PlayerEvents.h>

#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

KalturaPlayer::~KalturaPlayer()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void KalturaPlayer::setSource(const QUrl &source)
{
    if (m_source == source)
        return;
    m_source = source;
    NotificationCenter::defaultCenter().removeObserver(this);
    if (auto *replaced = page()) { // A session may hold the player a moment longer.
        disconnect(m_controller.get(), nullptr, this, nullptr);
        replaced->setParentItem(nullptr);
    }
    m_controller = source.isEmpty() ? nullptr : QtKPViewController::create(source);
    if (m_controller) {
        connect(m_controller.get(), &KPViewController::mediaChanged, this, &KalturaPlayer::mediaChanged);
        NotificationCenter::defaultCenter().addObserver(
            this, PluginPlayNotification,
            [this](const Notification &choice) { choose(choice.userInfo.value(u"params"_s).toMap()); },
            QVariant::fromValue<QObject *>(m_controller.get()));
    }
    if (auto *item = page()) {
        item->setParentItem(this);
        item->setSize(size());
    }
    Q_EMIT sourceChanged();
    Q_EMIT mediaChanged();
}

/// The library posts a choice once for each time that the player became playable.
void KalturaPlayer::choose(const QVariantMap &params)
{
    if (std::exchange(m_isChoosing, true))
        return;
    const auto report = [this, params] {
        m_isChoosing = false;
        Q_EMIT pluginVideoSelected(params);
    };
    QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
}

void KalturaPlayer::play()
{
    if (m_controller)
        m_controller->play();
}

void KalturaPlayer::pause()
{
    if (m_controller)
        m_controller->pause();
}

void KalturaPlayer::seek(double seconds)
{
    if (m_controller)
        m_controller->seek(seconds);
}

void KalturaPlayer::changeMedia(const QString &entryId)
{
    if (m_controller)
        m_controller->changeMedia(entryId);
}

void KalturaPlayer::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (auto *item = page())
        item->setSize(size());
}

QQuickItem *KalturaPlayer::page() const
{
    return m_controller ? qobject_cast<QQuickItem *>(m_controller->view()) : nullptr;
}

} // namespace zelvano
