#include "VideoFolder.h"

#include <QCollator>
#include <QCryptographicHash>
#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <map>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

constexpr int maximumFiles = 100'000; // Of any kind.
constexpr size_t maximumEntries = 5000;
constexpr size_t firstVideos = 24; // Enough for a first screen.
constexpr int maximumProcesses = 4;
constexpr int slowestFile = 15'000; // Milliseconds.
constexpr double latestStill = 30;  // Seconds.

QString cacheFileOf(const QFileInfo &file)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(
        u"%1\n%2\n%3"_s.arg(file.filePath()).arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch()).toUtf8());
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/zelvano-sandbox/"_L1 +
           QString::fromLatin1(hash.result().toHex());
}

/// False for a file that is missing or damaged.
bool readCached(const QString &path, double &seconds, QByteArray *thumbnail = nullptr)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QDataStream stream(&file);
    stream >> seconds;
    if (thumbnail)
        stream >> *thumbnail;
    return stream.status() == QDataStream::Ok;
}

bool writeCached(const QString &path, double seconds, const QByteArray &thumbnail)
{
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QDataStream stream(&file);
    stream << seconds << thumbnail;
    return file.commit();
}

} // namespace

VideoFolder::VideoFolder(std::function<void(const VideoProgress &)> progress) : m_progress(std::move(progress))
{
    m_pool.setMaxThreadCount(std::clamp(QThread::idealThreadCount(), 1, maximumProcesses));
}

VideoFolder::~VideoFolder()
{
    m_stopping = true;
    m_pool.clear();
    m_pool.waitForDone();
}

QString VideoFolder::open(const QString &path)
{
    for (const auto &program : {u"ffmpeg"_s, u"ffprobe"_s}) {
        if (QStandardPaths::findExecutable(program).isEmpty())
            return program + " is missing: install the package ffmpeg"_L1;
    }
    if (auto error = find(path); !error.isNull())
        return error;
    order(path);
    std::vector<size_t> unknown;
    for (size_t index = 0; index < m_entries.size(); ++index) {
        if (!findInCache(m_entries[index]))
            unknown.push_back(index);
    }
    m_ready = m_entries.size() - unknown.size();
    m_total = static_cast<int>(unknown.size());
    for (const size_t index : unknown)
        m_pool.start([this, index] { prepare(index); });
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_ready >= firstVideos || m_reported == m_total; });
    m_isOpen = true;
    return m_ready > 0 ? QString() : u"no video in %1 can be played"_s.arg(path);
}

/// Returns an error, null when there are videos.
QString VideoFolder::find(const QString &path)
{
    const QFileInfo folder(QFileInfo(path).canonicalFilePath()); // Empty for a path that leads nowhere.
    if (!folder.isDir() || !folder.isReadable())
        return u"%1 is not a folder that can be read"_s.arg(path);
    const QDir root(folder.filePath());
    const QString inside = root.path().endsWith(u'/') ? root.path() : root.path() + u'/';
    static const QStringList suffixes{u"mp4"_s, u"webm"_s, u"mkv"_s};
    QDirIterator files(root.path(), QDir::Files, QDirIterator::Subdirectories);
    for (int looked = 0; files.hasNext() && looked < maximumFiles; ++looked) {
        const QFileInfo file(files.next());
        const QString suffix = file.suffix().toLower();
        if (!suffixes.contains(suffix))
            continue;
        Entry entry;
        entry.file = file.canonicalFilePath(); // Empty for a link that leads nowhere.
        entry.name = root.relativeFilePath(file.filePath());
        if (!entry.file.startsWith(inside)) {
            report(entry.name + ": a link that leads out of the folder"_L1);
            continue;
        }
        entry.cacheFile = cacheFileOf(file);
        entry.video.suffix = suffix;
        entry.video.title = file.completeBaseName();
        entry.video.customerId = entry.name;
        entry.video.category = entry.name.contains(u'/') ? entry.name.section(u'/', 0, 0) : root.dirName();
        entry.video.published = file.lastModified().toSecsSinceEpoch();
        m_entries.push_back(std::move(entry));
    }
    return m_entries.empty() ? u"%1 has no MP4, WebM or MKV file"_s.arg(path) : QString();
}

/// By name, with one of each category in turn.
void VideoFolder::order(const QString &path)
{
    QCollator byName{QLocale(QLocale::English)};
    byName.setNumericMode(true);
    std::ranges::sort(m_entries, byName, &Entry::name);
    std::map<QString, int> counts;
    std::map<QString, int> ranks; // In the category, by name.
    for (const Entry &entry : m_entries)
        ranks[entry.name] = ++counts[entry.video.category];
    std::ranges::stable_sort(m_entries, {}, [&ranks](const Entry &entry) { return ranks[entry.name]; });

    if (m_entries.size() > maximumEntries) {
        const auto left = m_entries.size() - maximumEntries;
        report(u"%1: %2 of its files, the limit is %3"_s.arg(path).arg(left).arg(maximumEntries));
        m_entries.resize(maximumEntries);
    }
    for (size_t index = 0; index < m_entries.size(); ++index) {
        m_entries[index].video.number = static_cast<int>(index) + 1;
        m_entries[index].video.value = std::max(100 - static_cast<int>(index), 1);
    }
}

bool VideoFolder::findInCache(Entry &entry) const
{
    double seconds = 0;
    entry.isReady = readCached(entry.cacheFile, seconds);
    entry.video.seconds = qRound(seconds);
    return entry.isReady;
}

void VideoFolder::prepare(size_t index)
{
    Entry &entry = m_entries[index];
    double seconds = 0;
    const auto error = read(entry, seconds);
    if (m_stopping)
        return;
    {
        const std::lock_guard lock(m_mutex);
        ++m_done;
        entry.isReady = error.isNull();
        entry.video.seconds = qRound(seconds);
        m_ready += entry.isReady ? 1 : 0;
    }
    report(error.isNull() ? QString() : entry.name + ": "_L1 + error);
    const std::lock_guard lock(m_mutex);
    ++m_reported;
    m_changed.notify_all();
}

/// Fills the cache. Returns an error, null when it works. A file could be a playlist that names other files or hosts,
/// so ffmpeg gets only these containers and no network.
QString VideoFolder::read(const Entry &entry, double &seconds) const
{
    const QString url = u"file:"_s + entry.file;
    const QStringList input{u"-protocol_whitelist"_s,   u"file"_s, u"-format_whitelist"_s,
                            u"mov,mp4,matroska,webm"_s, u"-i"_s,   url};
    const auto length =
        run(u"ffprobe"_s,
            QStringList{u"-v"_s, u"error"_s, u"-show_entries"_s, u"format=duration"_s, u"-of"_s, u"csv=p=0"_s} + input);
    seconds = std::clamp(length.trimmed().toDouble(), 0.0, 1e8); // 0 for one without a length.
    QByteArray thumbnail;
    for (const double still : {std::min(seconds / 10, latestStill), 0.0}) {
        if (!thumbnail.isEmpty())
            break;
        thumbnail = run(u"ffmpeg"_s, QStringList{u"-nostdin"_s, u"-v"_s, u"error"_s, u"-threads"_s, u"1"_s, u"-ss"_s,
                                                 QString::number(still)} +
                                         input +
                                         QStringList{u"-an"_s, u"-sn"_s, u"-frames:v"_s, u"1"_s, u"-vf"_s,
                                                     u"scale=480:480:force_original_aspect_ratio=decrease"_s, u"-q:v"_s,
                                                     u"4"_s, u"-f"_s, u"mjpeg"_s, u"pipe:1"_s});
    }
    if (thumbnail.isEmpty())
        return u"ffmpeg finds no picture in it"_s;
    return writeCached(entry.cacheFile, seconds, thumbnail) ? QString() : u"cannot write "_s + entry.cacheFile;
}

/// Returns what the program prints; nothing when it fails, takes too long or the folder is closed.
QByteArray VideoFolder::run(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    if (m_isOpen)
        process.setChildProcessModifier([] { setpriority(PRIO_PROCESS, 0, 10); }); // A video plays meanwhile.
    process.start(program, arguments, QIODevice::ReadOnly);
    QElapsedTimer time;
    time.start();
    while (!process.waitForFinished(100) && process.state() != QProcess::NotRunning) {
        if (m_stopping || time.hasExpired(slowestFile)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
    }
    const bool works = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return works ? process.readAllStandardOutput() : QByteArray();
}

void VideoFolder::report(const QString &skipped)
{
    if (!m_progress)
        return;
    VideoProgress progress{0, 0, skipped};
    {
        const std::lock_guard lock(m_mutex);
        progress.done = m_done;
        progress.total = m_total;
    }
    m_progress(progress);
}

std::vector<Video> VideoFolder::videos() const
{
    std::vector<Video> videos;
    const std::lock_guard lock(m_mutex);
    for (const Entry &entry : m_entries) {
        if (entry.isReady)
            videos.push_back(entry.video);
    }
    return videos;
}

VideoFolder::Entry VideoFolder::entryOf(int number) const
{
    const std::lock_guard lock(m_mutex);
    const bool isKnown = number > 0 && static_cast<size_t>(number) <= m_entries.size();
    return isKnown && m_entries[static_cast<size_t>(number) - 1].isReady ? m_entries[static_cast<size_t>(number) - 1]
                                                                         : Entry();
}

QString VideoFolder::file(int number) const
{
    return entryOf(number).file;
}

QByteArray VideoFolder::thumbnail(int number) const
{
    double seconds = 0;
    QByteArray thumbnail;
    if (const auto path = entryOf(number).cacheFile; !path.isEmpty())
        readCached(path, seconds, &thumbnail);
    return thumbnail;
}

} // namespace zelvano::sandbox
