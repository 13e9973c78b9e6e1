#include "KPViewController.h"

namespace zelvano {

KPViewController::KPViewController() = default;
KPViewController::~KPViewController() = default;

void KPViewController::setDelegate(QObject *delegate)
{
    m_delegate = delegate;
}

void KPViewController::tellLoadState(int state)
{
    if (m_delegate)
        QMetaObject::invokeMethod(m_delegate, "playerLoadStateDidChange", Q_ARG(QObject *, this), Q_ARG(int, state));
}

void KPViewController::tellPlaybackState(int state)
{
    if (m_delegate)
        QMetaObject::invokeMethod(m_delegate, "playerPlaybackStateDidChange", Q_ARG(QObject *, this),
                                  Q_ARG(int, state));
}

} // namespace zelvano
