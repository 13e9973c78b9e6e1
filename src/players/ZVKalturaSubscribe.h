#pragma once

#include <ZelvanoUI/PlayerSubscriber.h>
#include <ZelvanoUI/zelvanocore_export.h>

#include <QMutex>
#include <QPointer>

#include <memory>
#include <optional>

namespace zelvano {

struct Notification;

/// Listens to a Kaltura player as its delegate, and hands fetched recommendations to the player's plug-in.
///
/// It speaks to the player by name and so works with any class that is named like it; what the player does not offer is
/// absent. It does not hold the player, reports the end of a video as "ended", never asks for an overlay, and cannot
/// switch the video: the host does, when the plug-in's choice is announced to it.
class ZELVANOCORE_EXPORT ZVKalturaSubscribe : public QObject, public PlayerSubscriber
{
    Q_OBJECT

public:
    /// Becomes the player's delegate at once.
    static std::shared_ptr<ZVKalturaSubscribe> create(const std::shared_ptr<QObject> &player);
    ~ZVKalturaSubscribe() override;

    /// Does nothing, on purpose: the player keeps its delegate, and every report goes on until the adapter ends.
    void dismissSubscriber() override;

    // The player's own properties "duration", "currentPlaybackTime", "entryId", "view" and "videoBounds". From another
    // thread than the main one the first three are as of the last report.
    std::optional<double> duration() const override;
    double currentPosition() const override;
    QString videoId() const override;
    QObject *parentView() const override;
    QSizeF videoSize() const override;

    // What the player calls on its delegate.
    Q_INVOKABLE void playerLoadStateDidChange(QObject *player, int state);
    Q_INVOKABLE void playerPlaybackStateDidChange(QObject *player, int state);

    /// Hands what the notification carries to the plug-in of the player that it is about.
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
