#include <ZelvanoUI/KPViewController.h>

namespace zelvano {

KPViewController::KPViewController() = default;
KPViewController::~KPViewController() = default;

void KPViewController::setDelegate(QObject *delegate)
{
    m_delegate = delegate;
}

void KPViewController::tellLoadState(int state)
{
    const QPointer<KPViewController> self(this); // Who is told may end the player.
    if (m_delegate)
        QMetaObject::invokeMethod(m_delegate, "playerLoadStateDidChange", Q_ARG(QObject *, this), Q_ARG(int, state));
    if (self)
        Q_EMIT loadStateChanged(state);
}

void KPViewController::tellPlaybackState(int state)
{
    const QPointer<KPViewController> self(this);
    if (m_delegate)
        QMetaObject::invokeMethod(m_delegate, "playerPlaybackStateDidChange", Q_ARG(QObject *, this),
                                  Q_ARG(int, state));
    if (self)
        Q_EMIT playbackStateChanged(state);
}

} // namespace zelvano
