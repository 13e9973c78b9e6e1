#pragma once

#include <QtGlobal>

namespace zelvano {

/// The seek that mpv makes: the player's own, or one of the host, a loop or a canvas. A seek that begins before another
/// has ended goes on with it. Times are in seconds.
class MpvSeek
{
public:
    /// The player sends the command with this number, which seeks to the target.
    void send(quint64 number, double target);
    void takeReply(quint64 number, bool isAccepted);

    /// mpv leaves this position.
    void begin(double position);
    /// From begin() to end().
    bool isUnderWay() const { return m_isUnderWay; }
    /// mpv has arrived, and is asked for its position with this number.
    void arrive(quint64 question) { m_question = question; }
    /// Whether an answer is about this seek. It is not if mpv has begun to seek again.
    bool awaits(quint64 question) const { return m_isUnderWay && m_question == question; }
    /// Returns whether the player's last command has brought mpv here.
    bool end();

    double origin() const { return m_origin; }
    double target() const { return m_target; }

private:
    enum class Own { None, Sent, Accepted, Begun };

    Own m_own = Own::None;
    quint64 m_number = 0; // Of the player's last command.
    double m_target = 0;
    bool m_isUnderWay = false;
    double m_origin = 0;
    quint64 m_question = 0;
};

} // namespace zelvano
