#pragma once

#include "PlayerAdapter.h"

#include <QMutex>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace zelvano {

struct Notification;

/// The delegate of a Kaltura player. Passes fetched recommendations to the player's plug-in.
///
/// It calls the player by name, so any class of that name works; what the player does not offer is absent. It does not
/// hold the player, reports the end of a video as "ended", never asks for an overlay, and cannot switch the video: the
/// host does, on PluginPlayNotification.
class ZELVANOCORE_EXPORT ZVKalturaSubscribe : public QObject, public PlayerAdapter
{
    Q_OBJECT

public:
    /// Becomes the player's delegate at once.
    static std::shared_ptr<ZVKalturaSubscribe> create(const std::shared_ptr<QObject> &player);
    ~ZVKalturaSubscribe() override;

    /// Intended: does nothing. The player keeps its delegate, and reports go on until the adapter ends.
    void dismissSubscriber() override;

    // The player's properties "duration", "currentPlaybackTime", "entryId", "view" and "videoBounds". On another thread
    // than the main one the first three are the values last read on the main thread.
    std::optional<double> duration() const override;
    double currentPosition() const override;
    QString videoId() const override;
    QObject *parentView() const override;
    QSizeF videoSize() const override;

    // The player calls these on its delegate.
    Q_INVOKABLE void playerLoadStateDidChange(QObject *player, int state);
    Q_INVOKABLE void playerPlaybackStateDidChange(QObject *player, int state);

    /// Sends the notification's recommendations to the plug-in of the player that is its object.
    void updatePlayerPlugin(const Notification &notification);

private:
    struct Media
    {
        QString entryId;
        std::optional<double> duration;
        double position = 0;
    };

    explicit ZVKalturaSubscribe(const std::shared_ptr<QObject> &player);

    void listenToPlugin(QObject *player);
    void askForAutoPlay(QObject *player);
    void autoPlayDidEvaluate(const QVariant &value);
    Media media() const;

    const QPointer<QObject> m_player;
    mutable QMutex m_mutex; // Guards the media.
    mutable Media m_media;
};

} // namespace zelvano
