#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QSortFilterProxyModel>
#include <QString>

namespace zelvano {

/// The entries of an EventLog that contain a text in their kind, title or detail. The QML element EventFilter.
class ZELVANOCORE_EXPORT EventFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    /// Not case-sensitive. An empty text matches every entry.
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
