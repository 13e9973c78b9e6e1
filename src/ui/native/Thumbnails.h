#pragma once

#include <ZelvanoUI/ZVVideoParams.h>

#include <QObject>
#include <QSize>
#include <QSizeF>

#include <functional>
#include <list>
#include <unordered_map>
#include <vector>

class QQuickItem;

namespace zelvano {

/// The pictures of one view's videos. Fetches them in the size that a cell shows, and keeps those of the cells near the
/// viewport and of a few more; the records of the others lose their picture. Never releases an image that the host has
/// set. The destructor cancels waiting fetches. Main thread.
class Thumbnails : public QObject
{
    Q_OBJECT

public:
    using Video = std::shared_ptr<ZVVideoParams>;

    /// The size of a cell in pixels, in steps: a cell that grows slowly does not decode its picture again and again.
    static QSize pixels(QSizeF points, const QQuickItem *cell);

    /// Fetches the picture before the video has a cell. Once it has arrived or failed, calls `fetched`, and then, in
    /// a later task, sets the image, unless many others wait without a cell.
    void fetch(const Video &video, QSize cell, const std::function<void()> &fetched);
    /// Fetches no picture until the video's cell disappears.
    void leaveOut(const Video &video) { m_pictures[video].isLeftOut = true; }

    /// The video has a cell near the viewport, of this size in pixels. Fetches the picture if it is missing or too
    /// small.
    void show(const Video &video, QSize cell);
    void resize(const Video &video, QSize cell);
    /// The cell disappeared. Cancels a fetch.
    void hide(const Video &video);

    /// The video has another image.
    Q_SIGNAL void imageDidChange(const zelvano::Thumbnails::Video &video);

private:
    struct Picture
    {
        int cells = 0;
        QSize size; ///< Of the cell for which it was decoded.
        std::shared_ptr<void> request;
        qint64 key = 0; ///< Of the image that was set here.
        bool isLeftOut = false;
    };

    void imageDidArrive(const Video &video, QSize cell);
    void keep(const Video &video);

    std::unordered_map<Video, Picture> m_pictures;
    std::vector<Video> m_kept; ///< Pictures without cells, the oldest first.
    std::list<std::shared_ptr<void>> m_fetches;
};

} // namespace zelvano
