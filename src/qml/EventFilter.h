#pragma once

#include <QSortFilterProxyModel>
#include <QString>
#include <qqmlintegration.h>

namespace zelvano {

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
