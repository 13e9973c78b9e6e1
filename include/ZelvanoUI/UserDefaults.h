#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

#include <memory>

namespace zelvano {

/// The strings that the library keeps between runs: the user's identity. Any thread.
///
/// They are kept in one small JSON file in the application's configuration folder. A file that cannot be read counts as
/// empty. When it cannot be written, the value is lost, with one log line. Each write replaces the whole file: a
/// process that is killed leaves the old or the new one. Of two processes that write at the same moment the last one
/// wins.
class ZELVANOCORE_EXPORT UserDefaults
{
public:
    static UserDefaults &standard();

    /// Null when there is no such entry.
    QString stringForKey(const QString &key) const;
    /// Writes the file to disk before it returns. A null value removes the entry.
    void setString(const QString &value, const QString &key);

    /// Uses this file instead of "zelvano.json" in the configuration folder. It must be the library's own. A null path
    /// restores the default.
    void setFilePath(const QString &path);

private:
    template<class T> friend T &immortal();
    UserDefaults();
    ~UserDefaults() = delete;

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zelvano
