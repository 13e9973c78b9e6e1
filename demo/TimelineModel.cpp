#include "TimelineModel.h"

#include <QUrl>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

QString text(const QJsonObject &entry, QLatin1StringView key)
{
    return entry.value(key).toVariant().toString();
}

QString requestTitle(const QJsonObject &entry)
{
    const auto path = QUrl(text(entry, "url"_L1)).path().section(u'/', 1);
    const auto type = entry.value("body"_L1).toObject().value("type"_L1).toString();
    return path + (type.isEmpty() ? QString() : u' ' + type);
}

QString detailOf(const QString &kind, const QJsonObject &entry)
{
    if (kind == "request"_L1) {
        const auto position = entry.value("body"_L1).toObject().value("position"_L1);
        return position.isUndefined() ? QString() : position.toString() + " s"_L1;
    }
    for (const auto key : {"state"_L1, "title"_L1, "index"_L1, "frame"_L1, "value"_L1}) {
        if (entry.contains(key))
            return text(entry, key);
    }
    return {};
}

} // namespace

QString TimelineModel::titleOf(const QJsonObject &entry)
{
    const auto kind = text(entry, "kind"_L1);
    const auto id = entry.value("id"_L1).toInteger();
    if (kind == "request"_L1) {
        const auto title = requestTitle(entry);
        m_requests.insert(id, title);
        return text(entry, "method"_L1) + u' ' + title;
    }
    if (kind == "response"_L1) {
        const auto outcome = entry.contains("error"_L1) ? text(entry, "error"_L1) : text(entry, "status"_L1);
        return m_requests.take(id) + u" → "_s + outcome;
    }
    return kind == "log"_L1 ? text(entry, "text"_L1) : text(entry, "what"_L1);
}

void TimelineModel::append(const QJsonObject &entry)
{
    const auto kind = text(entry, "kind"_L1);
    const auto title = titleOf(entry);
    if (kind == "log"_L1 && title.startsWith(u'{'))
        return;
    const auto time = QString::number(entry.value("ms"_L1).toDouble() / 1000.0, 'f', 2);
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_lines.push_back({time, kind, title, detailOf(kind, entry)});
    endInsertRows();
}

int TimelineModel::rowCount(const QModelIndex &) const
{
    return static_cast<int>(m_lines.size());
}

QVariant TimelineModel::data(const QModelIndex &index, int role) const
{
    const auto &line = m_lines.at(static_cast<std::size_t>(index.row()));
    switch (role) {
    case TimeRole:
        return line.time;
    case KindRole:
        return line.kind;
    case TitleRole:
        return line.title;
    case DetailRole:
        return line.detail;
    default:
        return {};
    }
}

QHash<int, QByteArray> TimelineModel::roleNames() const
{
    return {{TimeRole, "time"}, {KindRole, "kind"}, {TitleRole, "title"}, {DetailRole, "detail"}};
}

} // namespace demo
