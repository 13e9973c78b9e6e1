#pragma once

#include "EventLog.h"
#include "Recommendations.h"

#include <QPointer>
#include <QSortFilterProxyModel>
#include <QUrl>
#include <qqmlintegration.h>

namespace zelvano {

/// The log of what the library sends, is answered and tells, of the sessions of one Recommendations. Its rows are the
/// roles time, kind, title, detail and text.
class SessionLog : public zelvano::EventLog
{
    Q_OBJECT
    QML_NAMED_ELEMENT(EventLog)

public:
    explicit SessionLog(QObject *parent = nullptr);

    /// Whose listeners' calls are seen; service calls and notifications are seen without one.
    Q_PROPERTY(zelvano::Recommendations *recommendations READ recommendations WRITE setRecommendations NOTIFY
                   recommendationsChanged FINAL)
    Recommendations *recommendations() const { return m_recommendations; }
    void setRecommendations(Recommendations *recommendations);
    Q_SIGNAL void recommendationsChanged();

    /// Writes what is kept to a file of its own in the folder for downloads, as JSON lines. Empty when that fails.
    Q_INVOKABLE QUrl exportToDownloads() const;

private:
    void watchSession();

    QPointer<Recommendations> m_recommendations;
};

/// The rows of a log whose kind, title or detail contains a text.
class EventFilter : public QSortFilterProxyModel
{
    Q_OBJECT
    QML_ELEMENT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    /// Upper and lower case are the same; empty lets all pass.
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)
    QString text() const { return m_text; }
    void setText(const QString &text);
    Q_SIGNAL void textChanged();

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    QString m_text;
};

} // namespace zelvano
