#include <ZelvanoUI/KPViewController.h>

#include <QPointer>

namespace zelvano {

struct KPViewController::Private
{
    QPointer<QObject> delegate;

    /// The delegate's function and the signal's receivers may end the player.
    void tell(KPViewController *player, const char *function, void (KPViewController::*signal)(int), int state) const
    {
        const QPointer<KPViewController> alive(player);
        if (delegate)
            QMetaObject::invokeMethod(delegate, function, Q_ARG(QObject *, player), Q_ARG(int, state));
        if (alive)
            Q_EMIT(player->*signal)(state);
    }
};

KPViewController::KPViewController() : d(new Private) {}

KPViewController::~KPViewController() = default;

void KPViewController::setDelegate(QObject *delegate)
{
    d->delegate = delegate;
}

QObject *KPViewController::delegate() const
{
    return d->delegate;
}

void KPViewController::tellLoadState(int state)
{
    d->tell(this, "playerLoadStateDidChange", &KPViewController::loadStateChanged, state);
}

void KPViewController::tellPlaybackState(int state)
{
    d->tell(this, "playerPlaybackStateDidChange", &KPViewController::playbackStateChanged, state);
}

} // namespace zelvano

#include "ZelvanoUI/moc_KPViewController.cpp"
