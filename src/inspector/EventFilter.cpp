#include "EventFilter.h"

#include <ZelvanoUI/EventLog.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zelvano {

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
