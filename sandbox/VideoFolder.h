#pragma once

#include "Videos.h"
#include <ZelvanoUI/Sandbox.h>

#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace zelvano::sandbox {

/// A person's own videos. ffmpeg reads each once; the cache keeps its length and thumbnail. Thread-safe after open().
class VideoFolder
{
public:
    explicit VideoFolder(std::function<void(const VideoProgress &)> progress);
    /// Ends the work in the background.
    ~VideoFolder();
    Q_DISABLE_COPY_MOVE(VideoFolder)

    /// Blocks until the first videos can be played. Returns an error, null when it works.
    QString open(const QString &path);

    /// Those that are known to play, in an order that takes one of each category in turn.
    std::vector<Video> videos() const;
    /// Null for a number that is not in videos().
    QString file(int number) const;
    QByteArray thumbnail(int number) const;

private:
    struct Entry
    {
        Video video;
        QString name; ///< In the folder.
        QString file;
        QString cacheFile;
        bool isReady = false;
    };

    QString find(const QString &path);
    void order(const QString &path);
    bool findInCache(Entry &entry) const;
    void prepare(size_t index);
    QString read(const Entry &entry, double &seconds) const;
    QByteArray run(const QString &program, const QStringList &arguments) const;
    void report(const QString &skipped = {});
    Entry entryOf(int number) const;

    const std::function<void(const VideoProgress &)> m_progress;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_isOpen = false; ///< The work goes on in the background.
    std::vector<Entry> m_entries;
    mutable std::mutex m_mutex; ///< Guards `isReady` and `seconds` of the entries, and the counts.
    std::condition_variable m_changed;
    size_t m_ready = 0;
    int m_done = 0;
    int m_reported = 0; ///< Of those that are done.
    int m_total = 0;
    QThreadPool m_pool; ///< Last: its threads use the others.
};

} // namespace zelvano::sandbox
