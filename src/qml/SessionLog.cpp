#include "SessionLog.h"

namespace zelvano {

SessionLog::SessionLog(QObject *parent) : EventLog(parent) {}

void SessionLog::setRecommendations(Recommendations *recommendations)
{
    if (m_recommendations == recommendations)
        return;
    if (m_recommendations)
        disconnect(m_recommendations, nullptr, this, nullptr);
    m_recommendations = recommendations;
    if (recommendations) {
        connect(recommendations, &QObject::destroyed, this, &SessionLog::recommendationsChanged);
        connect(recommendations, &Recommendations::sessionBegan, this, &SessionLog::watchSession);
    }
    watchSession();
    Q_EMIT recommendationsChanged();
}

void SessionLog::watchSession()
{
    if (m_recommendations)
        watch(m_recommendations->engine());
}

} // namespace zelvano
