#pragma once

#include <ZelvanoUI/MPMoviePlayerViewController.h>

/// A movie player that changes only by calls of the test.
class FakeMoviePlayer : public zelvano::MPMoviePlayerController
{
public:
    using State = zelvano::MPMoviePlaybackState;
    using Reason = zelvano::MPMovieFinishReason;

    zelvano::MPMoviePlaybackState playbackState() const override { return state; }
    zelvano::MPMovieLoadStates loadState() const override { return loaded; }
    double duration() const override { return length; }
    double currentPlaybackTime() const override { return time; }
    double playableDuration() const override { return playable; }
    QSizeF naturalSize() const override { return {320, 180}; }
    bool shouldAutoplay() const override { return true; }
    QObject *view() const override { return &m_view; }
    void play() override { become(State::Playing); }
    void pause() override { become(State::Paused); }
    void stop() override { become(State::Stopped); }
    bool acceptsNextVideo(const QUrl &url) const override { return url.scheme() != QStringLiteral("pipe"); }

    void become(State next)
    {
        state = next;
        states.append(next);
        tellPlaybackState();
    }
    void load(int flags)
    {
        loaded = zelvano::MPMovieLoadStates::fromInt(flags);
        tellLoadState();
    }
    using MPMoviePlayerController::tellEnteringFullscreen;
    using MPMoviePlayerController::tellExitingFullscreen;
    using MPMoviePlayerController::tellFinish;

    State state = State::Stopped;
    QList<State> states; ///< All states so far.
    zelvano::MPMovieLoadStates loaded;
    double length = 60;
    double time = 0;
    double playable = 30;

protected:
    void loadContent(const QString &) override {}

private:
    mutable QObject m_view;
};
