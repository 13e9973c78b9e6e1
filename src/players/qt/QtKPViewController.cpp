#include <ZelvanoUI/QtKPViewController.h>

#include "KPPlayerPage.h"
#include <ZelvanoUI/MainThread.h>

namespace zelvano {

using namespace Qt::StringLiterals;

struct QtKPViewController::Private
{
    KPPlayerPage page;
};

QtKPViewController::QtKPViewController(const QUrl &page) : d(new Private{KPPlayerPage(page)})
{
    connect(&d->page, &KPPlayerPage::frameChanged, this, &Player::frameChanged);
    connect(&d->page, &KPPlayerPage::mediaChanged, this, &KPViewController::mediaChanged);
    connect(&d->page, &KPPlayerPage::loadStateChanged, this, [this](int state) { tellLoadState(state); });
    connect(&d->page, &KPPlayerPage::playbackStateChanged, this, [this](int state) { tellPlaybackState(state); });
}

QtKPViewController::~QtKPViewController() = default;

std::shared_ptr<QtKPViewController> QtKPViewController::create(const QUrl &page)
{
    return std::shared_ptr<QtKPViewController>(new QtKPViewController(page), MainThreadDeleter{});
}

QObject *QtKPViewController::view() const
{
    return d->page.item();
}

QQuickItem *QtKPViewController::webView() const
{
    return d->page.webView();
}

QRectF QtKPViewController::videoBounds() const
{
    const auto *item = d->page.item();
    const auto picture = d->page.media().pictureSize;
    if (!item || picture.isEmpty())
        return {};
    QRectF bounds({}, picture.scaled(item->size(), Qt::KeepAspectRatio));
    bounds.moveCenter(QRectF({}, item->size()).center());
    return bounds;
}

QString QtKPViewController::entryId() const
{
    return d->page.media().entryId;
}

double QtKPViewController::duration() const
{
    return d->page.media().duration;
}

double QtKPViewController::currentPlaybackTime() const
{
    return d->page.media().currentTime;
}

bool QtKPViewController::isPaused() const
{
    return d->page.media().isPaused;
}

void QtKPViewController::play()
{
    d->page.call(u"play"_s);
}

void QtKPViewController::pause()
{
    d->page.call(u"pause"_s);
}

void QtKPViewController::seek(double seconds)
{
    d->page.call(u"seek"_s, {seconds});
}

void QtKPViewController::changeMedia(const QString &entryId)
{
    d->page.call(u"changeMedia"_s, {entryId});
}

void QtKPViewController::sendNotification(const QString &name, const QVariant &params)
{
    d->page.call(u"sendNotification"_s, {name, params});
}

void QtKPViewController::addKPlayerEventListener(const QString &event, const QString &, const KPHandler &handler)
{
    d->page.addListener(event, handler);
}

void QtKPViewController::asyncEvaluate(const QString &expression, const QString &, const KPHandler &handler)
{
    d->page.evaluate(expression, handler);
}

} // namespace zelvano

#include "ZelvanoUI/moc_QtKPViewController.cpp"
