#include <ZelvanoUI/UserDefaults.h>

#include "Immortal.h"
#include "Logging.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QMutex>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// Keeps the library's other processes from writing the store. The system's own lock, which ends with its process: the
/// lock file that QSettings uses outlives one that is killed, and holds the next writer up for half a minute when it
/// was just being made, or when its process number is in use again.
class StoreLock
{
public:
    explicit StoreLock(const QString &file)
        : m_folder(open(QFile::encodeName(QFileInfo(file).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        // Not for ever: whoever holds it may hang, and the host must not.
        const QDeadlineTimer deadline(patience);
        bool isHeld = false;
        while (m_folder >= 0 && !isHeld && !deadline.hasExpired()) {
            isHeld = flock(m_folder, LOCK_EX | LOCK_NB) == 0;
            if (!isHeld && errno != EWOULDBLOCK && errno != EINTR)
                return; // A file system without locks: QSettings' own has to do.
            if (!isHeld)
                QThread::msleep(1);
        }
        if (isHeld)
            QFile::remove(file + ".lock"_L1); // Left behind: whoever made it would be in here.
    }
    ~StoreLock()
    {
        if (m_folder >= 0)
            close(m_folder);
    }
    Q_DISABLE_COPY_MOVE(StoreLock)

private:
    static constexpr auto patience = std::chrono::milliseconds(500);

    const int m_folder;
};

} // namespace

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
    return immortal<UserDefaults>();
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
    const StoreLock storeLock(d->file());
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
