#pragma once

#include "FakePlayer.h"
#include "Request.h"
#include <ZelvanoUI/Zelvano.h>

#include <QTemporaryDir>

namespace zelvano::bench {

/// A host's session while a video plays: an engine with an open view and one listener, with logging off, and a service
/// on a port of 127.0.0.1. Use one at a time; needs the application object.
class OpenEngine
{
public:
    explicit OpenEngine(quint16 port);
    ~OpenEngine();
    Q_DISABLE_COPY_MOVE(OpenEngine)

    /// One player event. Its arguments exist already, so that the call is the engine's work only.
    void sendEvent() { m_engine->playerEvent(m_event, m_subscriber); }

    /// Waits until all calls are answered and the listener has been called, and clears the record of calls.
    void drain();

    /// The request of a player event, for the floor.
    http::Request eventRequest();

private:
    const QTemporaryDir m_folder;
    const std::shared_ptr<FakeSubscriber> m_subscriber = std::make_shared<FakeSubscriber>();
    const QString m_event;
    std::shared_ptr<Zelvano> m_engine;
};

} // namespace zelvano::bench
