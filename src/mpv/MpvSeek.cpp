#include "MpvSeek.h"

#include <utility>

namespace zelvano {

void MpvSeek::send(quint64 number, double target)
{
    m_number = number;
    m_target = target;
    m_own = Own::Sent;
}

void MpvSeek::takeReply(quint64 number, bool isAccepted)
{
    if (m_own == Own::Sent && number == m_number)
        m_own = isAccepted ? Own::Accepted : Own::None;
}

void MpvSeek::begin(double position)
{
    m_question = 0;
    if (!std::exchange(m_isUnderWay, true))
        m_origin = position;
    if (m_own == Own::Accepted)
        m_own = Own::Begun;
}

bool MpvSeek::end()
{
    m_isUnderWay = false;
    m_question = 0;
    if (m_own != Own::Begun)
        return false;
    m_own = Own::None;
    return true;
}

} // namespace zelvano
