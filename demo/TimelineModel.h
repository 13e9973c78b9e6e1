#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QJsonObject>

#include <vector>

namespace demo {

/// The trace as a person reads it: a line an occurrence, the newest last.
class TimelineModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { TimeRole = Qt::UserRole, KindRole, TitleRole, DetailRole };

    using QAbstractListModel::QAbstractListModel;

    /// Request bodies that the library logs are left out: the request's own line shows them.
    void append(const QJsonObject &entry);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Line
    {
        QString time;
        QString kind;
        QString title;
        QString detail;
    };

    QString titleOf(const QJsonObject &entry);

    std::vector<Line> m_lines;
    QHash<qint64, QString> m_requests; ///< Those under way, by id, for their answers' lines.
};

} // namespace demo
