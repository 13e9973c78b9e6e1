#include <ZelvanoUI/UserDefaults.h>

#include "Immortal.h"
#include "JsonReading.h"
#include "Logging.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QMutex>
#include <QSaveFile>
#include <QStandardPaths>

namespace zelvano {

using namespace Qt::StringLiterals;

struct UserDefaults::Private
{
    mutable QMutex mutex;
    QString path;
    bool failureLogged = false;

    /// Looked up on each use: the host may set its application name late.
    QString file() const
    {
        const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation));
        return path.isNull() ? folder.filePath(u"zelvano.json"_s) : path;
    }

    QJsonObject read() const
    {
        constexpr auto mostBytes = qint64{1024} * 1024; // A path to a device may have no end.
        QFile json(file());
        return json.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(json.read(mostBytes)).object() : QJsonObject();
    }

    bool write(const QJsonObject &entries) const
    {
        QDir().mkpath(QFileInfo(file()).path());
        QSaveFile target(file());
        // commit() does not report a disk that is full; flush() does.
        return target.open(QIODevice::WriteOnly) && target.write(QJsonDocument(entries).toJson()) > 0 &&
               target.flush() && target.commit();
    }
};

UserDefaults::UserDefaults() : d(std::make_unique<Private>()) {}

UserDefaults &UserDefaults::standard()
{
    return immortal<UserDefaults>();
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QMutexLocker lock(&d->mutex);
    return json::stringValue(d->read().value(key));
}

void UserDefaults::setString(const QString &value, const QString &key)
{
    QMutexLocker lock(&d->mutex);
    auto entries = d->read();
    if (value.isNull())
        entries.remove(key);
    else
        entries.insert(key, value);
    if (d->write(entries) || std::exchange(d->failureLogged, true))
        return;
    const auto file = d->file();
    lock.unlock(); // A host's message handler may need the defaults.
    ZV_LOG("Error writing user defaults to " << file << ", the identity lasts for this run only");
}

void UserDefaults::setFilePath(const QString &path)
{
    const QMutexLocker lock(&d->mutex);
    d->path = path;
    d->failureLogged = false;
}

} // namespace zelvano
