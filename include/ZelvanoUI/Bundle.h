#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>
#include <QUrl>

#include <memory>
#include <optional>

namespace zelvano {

/// A folder of resources described by its Info.json: compiled in, or beside the host's executable. A value.
class ZELVANOCORE_EXPORT Bundle
{
public:
    /// Nothing when the folder has no Info.json that holds a JSON object. ":/..." is a compiled-in folder.
    static std::optional<Bundle> atPath(const QString &path);
    /// Registers a bundle under its "CFBundleIdentifier" and replaces an earlier one. Any thread.
    static void load(const Bundle &bundle);
    /// A registered bundle. Any thread.
    static std::optional<Bundle> withIdentifier(const QString &identifier);
    /// A folder beside the host's executable, else a compiled-in one.
    static std::optional<Bundle> inMainBundle(const QString &resource, const QString &extension);
    /// The host's QCoreApplication::applicationName(). Empty when it has none.
    static QString mainBundleName();

    /// True for copies of one bundle. Two bundles of the same folder differ: its files may have changed in between.
    bool operator==(const Bundle &) const = default;

    /// Null when Info.json has no string for the key.
    QString infoValue(const QString &key) const;
    /// Invalid when the bundle has no such file.
    QUrl resource(const QString &name, const QString &extension) const;

private:
    struct Private;
    explicit Bundle(std::shared_ptr<const Private> data);

    std::shared_ptr<const Private> d;
};

/// The library's resources: the registered bundle "ZelvanoUI", else "ZelvanoUIResources.bundle" in the host
/// application, searched for once. Nothing, with a log line, when neither exists. Any thread.
ZELVANOCORE_EXPORT std::optional<Bundle> zelvanoBundle();

} // namespace zelvano
