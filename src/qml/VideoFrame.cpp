#include "VideoFrame.h"

#include "MainQueue.h"

#include <chrono>

namespace zelvano {

namespace {

constexpr auto restDelay = std::chrono::milliseconds(500);

} // namespace

VideoFrame::~VideoFrame()
{
    stopWaiting();
}

void VideoFrame::setItem(QQuickItem *item)
{
    if (m_item)
        disconnect(m_item, nullptr, this, nullptr);
    m_item = item;
    if (!item)
        return;
    connect(item, &QObject::destroyed, this, &VideoFrame::itemDestroyed);
    connect(item, &QQuickItem::windowChanged, this, &VideoFrame::itemDidMove);
    for (const auto move : {&QQuickItem::xChanged, &QQuickItem::yChanged, &QQuickItem::widthChanged,
                            &QQuickItem::heightChanged, &QQuickItem::visibleChanged})
        connect(item, move, this, &VideoFrame::itemDidMove);
}

bool VideoFrame::isShown() const
{
    return m_item && m_item->isVisible() && m_item->window() && !m_item->size().isEmpty();
}

void VideoFrame::awaitRest()
{
    stopWaiting();
    m_isWaiting = true;
    MainQueue::shared().performAfterDelay(this, restDelay, [this] {
        if (isShown())
            Q_EMIT cameToRest();
    });
}

void VideoFrame::stopWaiting()
{
    m_isWaiting = false;
    MainQueue::shared().cancelPreviousPerformRequests(this);
}

void VideoFrame::itemDidMove()
{
    if (m_isWaiting)
        awaitRest();
}

} // namespace zelvano
