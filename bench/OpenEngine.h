#pragma once

#include "FakePlayer.h"
#include "Request.h"
#include <ZelvanoUI/Zelvano.h>

#include <QTemporaryDir>

namespace zelvano::bench {

/// A session as hosts have it while a video plays: an engine with a view open and one listener, logging off, against
/// the service on a port of 127.0.0.1. One at a time; needs the application object.
class OpenEngine
{
public:
    explicit OpenEngine(quint16 port);
    ~OpenEngine();
    Q_DISABLE_COPY_MOVE(OpenEngine)

    /// One player event. What it needs is made beforehand: the call is the engine's alone.
    void sendEvent() { m_engine->playerEvent(m_event, m_subscriber); }

    /// Waits until every call is answered and the listener has heard of it, and forgets the calls.
    void drain();

    /// The request that a player event goes out as, for others to compare with.
    http::Request eventRequest();

private:
    const QTemporaryDir m_folder;
    const std::shared_ptr<FakeSubscriber> m_subscriber = std::make_shared<FakeSubscriber>();
    const QString m_event;
    std::shared_ptr<Zelvano> m_engine;
};

} // namespace zelvano::bench
