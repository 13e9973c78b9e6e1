#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <optional>

namespace zelvano {

/// A folder of resources with an Info.json that describes it: compiled in, or beside the host's executable. A value.
class ZELVANOCORE_EXPORT Bundle
{
public:
    /// Nothing when the folder has no readable Info.json; ":/..." is a compiled-in folder.
    static std::optional<Bundle> atPath(const QString &path);
    /// Makes a bundle known under its identifier ("CFBundleIdentifier"), in place of an earlier one. Any thread.
    static void load(const Bundle &bundle);
    /// One that was loaded.
    static std::optional<Bundle> withIdentifier(const QString &identifier);
    /// A bundle inside the host application: a folder beside its executable, else a compiled-in one.
    static std::optional<Bundle> inMainBundle(const QString &resource, const QString &extension);
    /// The host application's own name, which stands for its bundle's info; empty when it has none.
    static QString mainBundleName();

    QString path() const { return m_path; }
    /// Null when the info dictionary has no text under the key.
    QString infoValue(const QString &key) const;
    /// Invalid when the bundle has no such file.
    QUrl resource(const QString &name, const QString &extension) const;

private:
    Bundle(QString path, QJsonObject info);

    QString m_path;
    QJsonObject m_info;
};

/// The library's own resources: the loaded bundle "ZelvanoUI" if there is one, else "ZelvanoUIResources.bundle" inside
/// the host application, looked for once. Nothing when neither is there, which is logged. Any thread.
ZELVANOCORE_EXPORT std::optional<Bundle> zelvanoBundle();

} // namespace zelvano
