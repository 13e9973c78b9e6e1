#include "Witness.h"

#include "MPMoviePlayerController.h"
#include "PlayerEvents.h"

#include "Device.h"
#include "PlayerEvents.h"
#include "Trace.h"
#include "ZVRecommendation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QQuickItem>

namespace demo {

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

QString frameText(const QRectF &frame)
{
    return u"%1,%2 %3x%4"_s.arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
}

QJsonArray frameJson(const QRectF &frame)
{
    return {frame.x(), frame.y(), frame.width(), frame.height()};
}

/// As JSON where it is JSON, else as text.
QJsonValue decoded(const QByteArray &data)
{
    const auto document = QJsonDocument::fromJson(data);
    if (document.isObject())
        return document.object();
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(QString::fromUtf8(data));
}

} // namespace

Witness::Witness(Trace &trace) : m_trace(trace) {}

Witness::~Witness()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void Witness::watchNotifications()
{
    for (const auto &name :
         {SuggestionsDidFetchedNotification, DidSelecteRecommendationNotification, PluginPlayNotification,
          AVPlayerItemDidPlayToEndTimeNotification, MPMoviePlayerLoadStateDidChangeNotification,
          MPMoviePlayerPlaybackStateDidChangeNotification, MPMoviePlayerPlaybackDidFinishNotification,
          MPMoviePlayerWillEnterFullscreenNotification, MPMoviePlayerWillExitFullscreenNotification,
          UIDeviceOrientationDidChangeNotification}) {
        NotificationCenter::defaultCenter().addObserver(this, name, [this](const Notification &notification) {
            m_trace.add(u"notification"_s, {{"what"_L1, notification.name},
                                            {"object"_L1, notification.object.toString()},
                                            {"userInfo"_L1, QJsonObject::fromVariantMap(notification.userInfo)}});
            noteMovie(notification);
        });
    }
}

/// The notification tells only that something changed.
void Witness::noteMovie(const Notification &notification)
{
    const auto *movie = qobject_cast<MPMoviePlayerController *>(notification.object.value<QObject *>());
    if (movie && notification.name == MPMoviePlayerPlaybackStateDidChangeNotification) {
        m_trace.add(u"player"_s,
                    {{"what"_L1, u"playbackState"_s}, {"value"_L1, static_cast<int>(movie->playbackState())}});
    }
    if (movie && notification.name == MPMoviePlayerLoadStateDidChangeNotification)
        m_trace.add(u"player"_s, {{"what"_L1, u"loadState"_s}, {"value"_L1, movie->loadState().toInt()}});
}

void Witness::watchPlayer(const std::shared_ptr<KPViewController> &player)
{
    auto *const observed = player.get();
    QObject::connect(observed, &KPViewController::loadStateChanged, observed, [this](int state) {
        m_trace.add(u"player"_s, {{"what"_L1, u"loadState"_s}, {"value"_L1, state}});
    });
    QObject::connect(observed, &KPViewController::playbackStateChanged, observed, [this](int state) {
        m_trace.add(u"player"_s, {{"what"_L1, u"playbackState"_s}, {"value"_L1, state}});
    });
}

void Witness::watchPlayer(const std::shared_ptr<AVPlayer> &player)
{
    auto *const observed = player.get();
    QObject::connect(observed, &AVPlayer::rateChanged, observed, [this, observed] {
        m_trace.add(u"player"_s, {{"what"_L1, u"rate"_s}, {"value"_L1, observed->rate()}});
    });
    QObject::connect(observed, &AVPlayer::currentItemChanged, observed, [this, observed] {
        const auto item = observed->currentItem();
        const auto url = item ? item->asset().URL().toString() : QString();
        m_trace.add(u"player"_s, {{"what"_L1, u"currentItem"_s}, {"value"_L1, url}});
    });
}

void Witness::watchOverlay(ZVTopRecommendationView *overlay)
{
    if (!overlay || overlay == m_overlay)
        return;
    m_overlay = overlay;
    QObject::connect(overlay, &QQuickItem::visibleChanged, overlay, [this] {
        if (m_overlay->isVisible())
            // It gets its frame after it is un-hidden.
            QMetaObject::invokeMethod(
                m_overlay, [this] { overlayDidAppear(); }, Qt::QueuedConnection);
        else
            m_trace.add(u"overlay"_s, {{"what"_L1, u"hidden"_s}});
    });
    QObject::connect(overlay, &ZVTopRecommendationView::commandReceived, overlay, [this](const QString &command) {
        m_trace.add(u"overlay"_s, {{"what"_L1, u"command"_s}, {"value"_L1, command}});
    });
}

void Witness::overlayDidAppear()
{
    const auto frame = m_overlay->frame();
    m_trace.add(u"overlay"_s,
                {{"what"_L1, u"shown"_s}, {"frame"_L1, frameText(frame)}, {"rectangle"_L1, frameJson(frame)}});
}

void Witness::requestWillStart(quint64 id, const UrlRequest &request)
{
    QJsonObject headers;
    for (const auto &[name, value] : request.headers)
        headers.insert(QString::fromUtf8(name), QString::fromUtf8(value));
    QJsonObject entry{{"id"_L1, static_cast<qint64>(id)},
                      {"method"_L1, QString::fromUtf8(request.method)},
                      {"url"_L1, request.url.toString()},
                      {"headers"_L1, headers}};
    if (!request.body.isNull())
        entry.insert("body"_L1, decoded(request.body));
    m_trace.add(u"request"_s, entry);
}

void Witness::requestDidEnd(quint64 id, const std::optional<UrlResponse> &response, const QByteArray &data,
                            const std::optional<Error> &error)
{
    QJsonObject entry{{"id"_L1, static_cast<qint64>(id)}};
    if (response)
        entry.insert("status"_L1, response->status);
    if (error)
        entry.insert("error"_L1, error->description);
    else
        entry.insert("body"_L1, decoded(data));
    m_trace.add(u"response"_s, entry);
}

void Witness::suggestionsDidFetched(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &,
                                    const std::shared_ptr<ZVRecommendation> &recommendation)
{
    QJsonArray titles;
    for (const auto &video : recommendation->videoList())
        titles.append(video->title());
    m_trace.add(u"listener"_s, {{"what"_L1, u"suggestionsDidFetched"_s}, {"videos"_L1, titles}});
}

void Witness::stateDidChanged(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, const QString &state)
{
    m_trace.add(u"listener"_s, {{"what"_L1, u"stateDidChanged"_s}, {"state"_L1, state}});
}

void Witness::addRecommendationToView(const std::shared_ptr<Zelvano> &, const std::shared_ptr<QObject> &, QObject *view,
                                      QSizeF videoSize)
{
    const auto *item = qobject_cast<QQuickItem *>(view);
    const auto frame = item ? QRectF(item->position(), item->size()) : QRectF();
    m_trace.add(u"listener"_s, {{"what"_L1, u"addRecommendationToView"_s},
                                {"frame"_L1, frameText(frame)},
                                {"rectangle"_L1, frameJson(frame)},
                                {"videoSize"_L1, QJsonArray{videoSize.width(), videoSize.height()}}});
}

void Witness::didSelectVideo(ZelvanoViewController *, const std::shared_ptr<ZVVideoParams> &video)
{
    m_trace.add(u"delegate"_s,
                {{"what"_L1, u"didSelectVideo"_s}, {"title"_L1, video->title()}, {"videoId"_L1, video->videoId()}});
}

void Witness::didSelectDone(ZelvanoViewController *)
{
    m_trace.add(u"delegate"_s, {{"what"_L1, u"didSelectDone"_s}});
}

} // namespace demo
