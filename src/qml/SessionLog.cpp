#include "SessionLog.h"

#include <QDateTime>
#include <QDir>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

SessionLog::SessionLog(QObject *parent) : EventLog(parent) {}

void SessionLog::setRecommendations(Recommendations *recommendations)
{
    if (m_recommendations == recommendations)
        return;
    if (m_recommendations)
        disconnect(m_recommendations, nullptr, this, nullptr);
    m_recommendations = recommendations;
    if (recommendations)
        connect(recommendations, &Recommendations::sessionBegan, this, &SessionLog::watchSession);
    watchSession();
    Q_EMIT recommendationsChanged();
}

void SessionLog::watchSession()
{
    if (m_recommendations)
        watch(m_recommendations->engine());
}

QUrl SessionLog::exportToDownloads() const
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
    const auto now = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_s);
    const auto file = QUrl::fromLocalFile(folder.filePath(u"zelvano-events-%1.jsonl"_s.arg(now)));
    return folder.mkpath(u"."_s) && exportTo(file) ? file : QUrl();
}

void EventFilter::setText(const QString &text)
{
    if (std::exchange(m_text, text) == text)
        return;
    invalidateFilter();
    Q_EMIT textChanged();
}

bool EventFilter::filterAcceptsRow(int row, const QModelIndex &parent) const
{
    constexpr std::array roles{EventLog::KindRole, EventLog::TitleRole, EventLog::DetailRole};
    const auto index = sourceModel()->index(row, 0, parent);
    return std::ranges::any_of(
        roles, [&](int role) { return index.data(role).toString().contains(m_text, Qt::CaseInsensitive); });
}

} // namespace zelvano
