#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

namespace zelvano {

/// The small strings that the library keeps between runs of the host. Any thread.
///
/// They stand in an INI file of the application's own configuration folder. A store that cannot be read counts as
/// empty; one that cannot be written loses what is set and says so in the log once. Several processes may share it, and
/// be killed at any moment: it holds the old value or the new one.
class ZELVANOCORE_EXPORT UserDefaults
{
public:
    static UserDefaults &standard();

    /// Null when there is no such entry.
    QString stringForKey(const QString &key) const;
    /// A null value removes the entry.
    void setString(const QString &value, const QString &key);
    /// Forces what was set to disk.
    void synchronize();

    /// Another file, for hosts that keep their settings elsewhere, and for tests. The file is to be the library's own.
    /// A null path is the standard one.
    void setFilePath(const QString &path);

    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

private:
    template<class T> friend T &immortal();
    UserDefaults();
    ~UserDefaults() = delete;

    struct Private;
    Private *const d;
};

} // namespace zelvano
