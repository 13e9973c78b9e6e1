#include <ZelvanoUI/MpvPlayer.h>

#include "MpvCore.h"
#include "MpvSeek.h"
#include "MpvView.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/NotificationCenter.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include <mpv/client.h>

namespace zelvano {

namespace {

constexpr double unknownDuration = std::numeric_limits<double>::quiet_NaN();
constexpr double breakTolerance = 1.0; // Seconds. A remote video that ends earlier has lost its connection.
constexpr double shortestJump = 0.1;   // Seconds.

/// mpv reports changes in this order. The end must come before the pause that mpv makes there.
enum Observed : quint64 { Received = 1, FrameRate, Eof, Paused, Speed, Duration, Time, Width, Height };

std::optional<double> numberOf(const mpv_event_property &property)
{
    if (property.format != MPV_FORMAT_DOUBLE)
        return std::nullopt;
    return *static_cast<const double *>(property.data);
}

QByteArray locationOf(const QUrl &url)
{
    return url.isLocalFile() ? url.toLocalFile().toUtf8() : url.toEncoded();
}

int64_t entryOf(const mpv_event *reply)
{
    const auto &result = static_cast<const mpv_event_command *>(reply->data)->result;
    for (int index = 0; result.format == MPV_FORMAT_NODE_MAP && index < result.u.list->num; ++index) {
        if (std::strcmp(result.u.list->keys[index], "playlist_entry_id") == 0)
            return result.u.list->values[index].u.int64;
    }
    return 0;
}

} // namespace

struct MpvPlayer::Private
{
    MpvPlayer *const q;
    const MpvView view;
    const std::shared_ptr<MpvCore> core = MpvCore::create();
    quint64 lastNumber = 0;
    quint64 loadNumber = 0;  // Of the last command to load; 0 for none.
    quint64 pauseNumber = 0; // Of a change of the pause that mpv has not made yet; 0 for none.
    int64_t entry = 0;       // mpv's number of the current item; 0 until it is known.
    bool isCurrent = false;  // What mpv reports is about the current item.
    bool isOpen = false;     // mpv can play it.
    bool isUnloaded = false; // mpv has closed it.
    bool isPaused = true;
    MpvSeek seek;
    double received = 0;               // Where the last frame begins that mpv has buffered, in seconds.
    std::optional<double> receivedNow; // The same, as mpv answered at the end of a seek.
    double frameTime = 0;              // How long a frame is shown, in seconds; 0 while unknown.
    bool isEndDue = false;             // mpv is at the end, which is not reported yet.
    bool hasEnded = false;
    bool hasFailed = false;
    double speed = 1;
    QSizeF picture;
    std::weak_ptr<AVPlayerItem> playedItem; // The last one that had a rate.
    std::atomic<float> rate = 0;
    std::atomic<AVPlayerStatus> status = AVPlayerStatus::Unknown;
    std::atomic<double> currentTime = 0;

    Private(MpvPlayer *owner, QQuickItem *item) : q(owner), view(item)
    {
        connect(core.get(), &MpvCore::happened, q, [this](const mpv_event *event) { take(event); });
        const auto observe = [this](Observed number, const char *name, mpv_format format) {
            if (core->handle())
                mpv_observe_property(core->handle(), number, name, format);
        };
        observe(Received, "demuxer-cache-time", MPV_FORMAT_DOUBLE);
        observe(FrameRate, "container-fps", MPV_FORMAT_DOUBLE);
        observe(Eof, "eof-reached", MPV_FORMAT_FLAG);
        observe(Paused, "pause", MPV_FORMAT_FLAG);
        observe(Speed, "speed", MPV_FORMAT_DOUBLE);
        observe(Duration, "duration", MPV_FORMAT_DOUBLE);
        observe(Time, "time-pos", MPV_FORMAT_DOUBLE);
        observe(Width, "dwidth", MPV_FORMAT_DOUBLE);
        observe(Height, "dheight", MPV_FORMAT_DOUBLE);
        connect(&view, &MpvView::frameChanged, q, &Player::frameChanged);
    }

    // Reports of mpv. A receiver of their signals may drop the player.

    void take(const mpv_event *event)
    {
        const auto self = q->weak_from_this().lock();
        if (!self)
            return;
        switch (event->event_id) {
        case MPV_EVENT_COMMAND_REPLY:
            if (event->reply_userdata != 0) // A canvas's commands have no number.
                takeReply(event);
            break;
        case MPV_EVENT_SET_PROPERTY_REPLY:
            if (event->reply_userdata == pauseNumber)
                pauseNumber = 0;
            break;
        case MPV_EVENT_START_FILE:
            isCurrent =
                static_cast<const mpv_event_start_file *>(event->data)->playlist_entry_id == entry && entry != 0;
            seek = {};
            received = 0;
            break;
        case MPV_EVENT_FILE_LOADED:
            if (isCurrent) {
                isOpen = true;
                core->ask("duration", loadNumber);
            }
            break;
        case MPV_EVENT_END_FILE:
            if (isCurrent)
                close(*static_cast<const mpv_event_end_file *>(event->data));
            break;
        case MPV_EVENT_SEEK:
            seek.begin(currentTime);
            break;
        case MPV_EVENT_PLAYBACK_RESTART:
            if (isCurrent && seek.isUnderWay())
                askWhereItIs();
            break;
        case MPV_EVENT_GET_PROPERTY_REPLY:
            takeAnswer(*event);
            break;
        case MPV_EVENT_PROPERTY_CHANGE:
            takeProperty(event->reply_userdata, *static_cast<const mpv_event_property *>(event->data));
            break;
        default:
            break;
        }
        tellRate();
    }

    void takeReply(const mpv_event *reply)
    {
        const bool isAccepted = reply->error >= 0;
        seek.takeReply(reply->reply_userdata, isAccepted);
        if (reply->reply_userdata != loadNumber)
            return;
        if (isAccepted)
            entry = entryOf(reply);
        else
            fail();
    }

    void takeProperty(quint64 observed, const mpv_event_property &property)
    {
        const bool isFlag = property.format == MPV_FORMAT_FLAG && *static_cast<const int *>(property.data) != 0;
        const auto number = numberOf(property);
        const double value = number.value_or(0);
        switch (observed) {
        case Received:
            received = number.value_or(received);
            break;
        case FrameRate:
            frameTime = value > 0 ? 1 / value : 0;
            break;
        case Eof:
            isEndDue = isFlag && isOpen;
            tellEnd();
            break;
        case Paused:
            if (pauseNumber == 0)
                isPaused = isFlag;
            break;
        case Speed:
            speed = value;
            break;
        case Duration:
            if (isOpen) {
                setDuration(value);
                Q_EMIT q->durationChanged();
            }
            break;
        case Time:
            if (isCurrent && number)
                moveTo(*number);
            break;
        case Width:
            if (value > 0) // mpv has none for a moment while it changes where it draws.
                picture.setWidth(value);
            break;
        case Height:
            if (value > 0)
                picture.setHeight(value);
            break;
        default:
            break;
        }
    }

    void open(double duration)
    {
        setDuration(duration);
        setStatus(AVPlayerStatus::ReadyToPlay, AVPlayerItemStatus::ReadyToPlay);
        Q_EMIT q->durationChanged(); // Last: a receiver may set another item.
    }

    void close(const mpv_event_end_file &end)
    {
        isCurrent = isOpen = isEndDue = false;
        seek = {};
        isUnloaded = end.reason != MPV_END_FILE_REASON_REDIRECT;
        if (end.reason == MPV_END_FILE_REASON_REDIRECT)
            entry = end.playlist_insert_id; // A playlist: its first entry is the video.
        else if (end.reason == MPV_END_FILE_REASON_ERROR)
            fail();
        else if (end.reason == MPV_END_FILE_REASON_EOF)
            reachEnd();
        else
            setPaused(true); // The host has stopped it.
    }

    void askWhereItIs()
    {
        seek.arrive(++lastNumber);
        receivedNow.reset();
        core->ask("demuxer-cache-time", lastNumber);
        core->ask("time-pos", lastNumber);
    }

    void takeAnswer(const mpv_event &reply)
    {
        const auto &property = *static_cast<const mpv_event_property *>(reply.data);
        const auto number = reply.error < 0 ? std::nullopt : numberOf(property);
        const bool isAboutSeek = seek.awaits(reply.reply_userdata);
        if (isAboutSeek && QByteArrayView(property.name) == "demuxer-cache-time")
            receivedNow = number;
        else if (isAboutSeek)
            finishSeek(number.value_or(currentTime));
        else if (isOpen && reply.reply_userdata == loadNumber)
            open(number.value_or(0));
        tellEnd();
    }

    /// The answers of mpv may be newer than its event, and belong to a later seek. So only the player's last seek can
    /// fail.
    void finishSeek(double reached)
    {
        const bool isOwn = seek.end();
        const auto item = q->currentItem();
        if (!item)
            return;
        const bool isServed = isOwn && std::abs(reached - seek.target()) < breakTolerance;
        received = receivedNow.value_or(isServed ? reached : 0);
        if (isOwn && receivedNow && reached + breakTolerance < seek.target() &&
            !hasReceived(std::min(item->duration(), seek.target())))
            return fail();
        if (!hasReceived(reached)) // The end follows.
            return;
        currentTime = std::max(reached, 0.0);
        if (std::abs(currentTime - seek.origin()) > shortestJump) // A canvas seeks to where the video is.
            q->timeJumped();
        Q_EMIT q->currentTimeChanged();
    }

    /// The end of a seek decides whether mpv is at the end of the video, or of what a broken connection has served.
    void tellEnd()
    {
        if (status != AVPlayerStatus::Unknown && !seek.isUnderWay() && std::exchange(isEndDue, false))
            reachEnd();
    }

    void reachEnd()
    {
        const auto item = q->currentItem();
        if (!item || std::exchange(hasEnded, true))
            return;
        if (!hasReceived(item->duration()))
            return fail();
        setPaused(true);
        NotificationCenter::defaultCenter().post(
            {AVPlayerItemDidPlayToEndTimeNotification, QVariant::fromValue<QObject *>(item.get()), {}});
    }

    /// The connection served the video up to this position. When it is broken at a seek, mpv goes to the end of the
    /// video or of what it has received. Without a cache mpv has no such position when it has played the last packet.
    bool hasReceived(double seconds) const
    {
        const auto item = q->currentItem();
        const bool isRemote = item && !item->asset().URL().isLocalFile();
        return !isRemote || !(received + frameTime + breakTolerance < seconds);
    }

    void fail()
    {
        hasFailed = true;
        setPaused(true);
        setStatus(AVPlayerStatus::Failed, AVPlayerItemStatus::Failed);
    }

    /// Sets the player's own status first: adapters read it when the item's status changes.
    void setStatus(AVPlayerStatus own, AVPlayerItemStatus ofItem)
    {
        status = own;
        if (const auto item = q->currentItem())
            item->setStatus(ofItem);
    }

    void setDuration(double seconds)
    {
        if (const auto item = q->currentItem())
            item->setDuration(seconds > 0 ? seconds : unknownDuration);
    }

    void moveTo(double seconds)
    {
        currentTime = std::max(seconds, 0.0);
        Q_EMIT q->currentTimeChanged();
    }

    // Calls of the host and the library

    /// Until mpv has made the change, its reports of the pause do not count: they may be older.
    void setPaused(bool paused)
    {
        isPaused = paused;
        pauseNumber = ++lastNumber;
        core->setFlag("pause", paused, pauseNumber);
    }

    void seekTo(double seconds)
    {
        hasEnded = false;
        seek.send(++lastNumber, seconds);
        core->command({"seek", QByteArray::number(seconds, 'f', 3), "absolute+exact"}, lastNumber);
    }

    /// Emits rateChanged() also when only the item changed: adapters report the item's start on it.
    void tellRate()
    {
        const auto item = q->currentItem();
        const bool isPlaying = item && !isPaused && !hasEnded && !hasFailed;
        const auto now = isPlaying ? static_cast<float>(speed) : 0.0F;
        const bool isAnotherItem = now != 0 && playedItem.lock() != item;
        if (now != 0)
            playedItem = item;
        if (rate.exchange(now) != now || isAnotherItem)
            Q_EMIT q->rateChanged();
    }

    void load(const std::shared_ptr<AVPlayerItem> &item)
    {
        const auto self = q->weak_from_this().lock(); // A receiver of a report may drop the player.
        isCurrent = isOpen = isUnloaded = isEndDue = hasEnded = hasFailed = false;
        seek = {};
        entry = 0;
        picture = {};
        status = AVPlayerStatus::Unknown;
        loadNumber = ++lastNumber;
        if (item && !core->handle())
            return fail();
        if (item)
            core->command({"loadfile", locationOf(item->asset().URL())}, loadNumber);
        else
            core->command({"stop"});
        moveTo(0);
        Q_EMIT q->durationChanged();
        tellRate();
    }
};

MpvPlayer::MpvPlayer(QQuickItem *view) : d(new Private(this, view)) {}

MpvPlayer::~MpvPlayer() = default;

std::shared_ptr<MpvPlayer> MpvPlayer::create(QQuickItem *view)
{
    return std::shared_ptr<MpvPlayer>(new MpvPlayer(view), MainThreadDeleter{});
}

std::shared_ptr<MpvCore> MpvPlayer::core() const
{
    return d->core;
}

mpv_handle *MpvPlayer::handle() const
{
    return d->core->handle();
}

void MpvPlayer::seek(double seconds)
{
    if (std::isfinite(seconds))
        d->seekTo(std::max(seconds, 0.0));
}

double MpvPlayer::duration() const
{
    const auto item = currentItem();
    return item && item->duration() > 0 ? item->duration() : 0;
}

QObject *MpvPlayer::view() const
{
    return d->view.item();
}

QRectF MpvPlayer::videoBounds() const
{
    return d->view.boundsOf(d->picture);
}

float MpvPlayer::rate() const
{
    return d->rate;
}

AVPlayerStatus MpvPlayer::status() const
{
    return d->status;
}

double MpvPlayer::currentTime() const
{
    return d->currentTime;
}

void MpvPlayer::play()
{
    const auto self = weak_from_this().lock(); // A receiver of a report may drop the player.
    const auto item = currentItem();
    if (!item)
        return;
    if (d->hasFailed || d->isUnloaded)
        d->load(item);
    else if (d->hasEnded)
        seek(0);
    d->setPaused(false);
    d->tellRate();
}

void MpvPlayer::pause()
{
    d->setPaused(true);
    d->tellRate();
}

void MpvPlayer::loadItem(const std::shared_ptr<AVPlayerItem> &item)
{
    d->load(item);
}

} // namespace zelvano
