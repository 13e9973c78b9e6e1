#include "UserDefaults.h"

#include "Logging.h"

#include <QMutex>
#include <QSettings>
#include <QStandardPaths>

namespace zelvano {

using namespace Qt::StringLiterals;

/// Every access opens the store anew: a QSettings object belongs to one thread, while the file behind it, which
/// Qt caches and locks, may be used from all.
struct UserDefaults::Private
{
    mutable QMutex mutex;
    QString path;
    bool failureLogged = false;

    /// Asked for when it is needed, so that the host has named itself by then.
    QString file() const
    {
        if (!path.isNull())
            return path;
        return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/zelvano.ini"_L1;
    }

    /// By the object that set the value: another one does not learn that the file could not be written.
    void write(QSettings &store)
    {
        store.sync();
        if (store.status() == QSettings::NoError || failureLogged)
            return;
        failureLogged = true;
        ZV_LOG("Error writing user defaults to " << store.fileName() << ", the identity lasts for this run only");
    }
};

UserDefaults::UserDefaults() : d(new Private) {}

UserDefaults &UserDefaults::standard()
{
    // Never destroyed: an answer may come in while the process ends.
    static auto *const defaults = new UserDefaults;
    return *defaults;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QMutexLocker lock(&d->mutex);
    const QSettings store(d->file(), QSettings::IniFormat);
    const auto value = store.value(key);
    return value.isValid() ? value.toString() : QString();
}

void UserDefaults::setString(const QString &value, const QString &key)
{
    const QMutexLocker lock(&d->mutex);
    QSettings store(d->file(), QSettings::IniFormat);
    if (value.isNull())
        store.remove(key);
    else
        store.setValue(key, value);
    d->write(store);
}

void UserDefaults::synchronize()
{
    const QMutexLocker lock(&d->mutex);
    QSettings store(d->file(), QSettings::IniFormat);
    d->write(store);
}

void UserDefaults::setFilePath(const QString &path)
{
    const QMutexLocker lock(&d->mutex);
    d->path = path;
    d->failureLogged = false;
}

} // namespace zelvano
