#include <ZelvanoUI/ZVListView.h>

#include "Choice.h"
#include "InterfaceResource.h"
#include "Logging.h"
#include "MainQueue.h"
#include "Thumbnails.h"
#include "ZVVideoCollectionViewCell.h"
#include <ZelvanoUI/MainThread.h>

#include <QPointer>
#include <QSet>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t fetchesAtFirst = 16; // About a screenful.
constexpr std::size_t fetchesAtOnce = 250;
constexpr auto aFrame = std::chrono::milliseconds(16);
constexpr auto longestWait = std::chrono::milliseconds(100); // For slow pictures; then the next portion begins.

constexpr double leastPicture = 160; // Points; before the view has a width.

/// Tells a null text from an empty one, unlike a QString.
using Id = std::pair<bool, QString>;

Id idOf(const ZVVideoParams &video)
{
    const auto id = video.videoId();
    return {id.isNull(), id};
}

/// The videos of one recommendation on their way into the list.
struct Filling
{
    ZVVideoList videos;
    // Those with a cell when the recommendation came: two of one id in the same list both get a cell.
    QSet<Id> knownIds;
    std::size_t next = 0;

    /// The next video that gets a cell, with its index; null at the end.
    std::shared_ptr<ZVVideoParams> take()
    {
        while (next < videos.size()) {
            const auto place = next++;
            const auto &video = videos[place];
            if (!video || knownIds.contains(idOf(*video)))
                continue;
            // A record that is in the list twice keeps the index of its first place.
            const auto index = static_cast<std::size_t>(video->index());
            if (index >= place || videos[index] != video)
                video->setIndex(static_cast<qint64>(place));
            return video;
        }
        return nullptr;
    }
};

double ratioOf(const QImage &image)
{
    return image.isNull() ? 1.0 : double(image.height()) / image.width();
}

} // namespace

struct ZVListView::Private : public ZVItemViewDataSource
{
    explicit Private(ZVListView *list);
    ~Private() override;

    void fetchThumbnails(const std::shared_ptr<Filling> &filling, std::size_t count);
    void insert(const std::shared_ptr<ZVVideoParams> &video);
    void sortCells();
    void fitCells();
    double cellWidth() const { return items ? (items->width() - 3 * inset()) / 2 : 0; }
    void setRatio(ZVVideoParams &video, double ratio) const { video.setSize({cellWidth(), cellWidth() * ratio}); }

    // ZVItemViewDataSource
    qint64 numberOfItemsInSection() const override { return static_cast<qint64>(videoCells.size()); }
    void cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell) override;
    QSizeF sizeForItemAtIndexPath(qint64 row) const override
    {
        return videoCells[static_cast<std::size_t>(row)]->size();
    }
    double inset() const override { return items ? double(insetProportion) * items->width() : 0; }
    void didSelectItemAtIndexPath(qint64 row) override;

    ZVListView *const q;
    Thumbnails thumbnails;
    InterfaceResource content;
    const QPointer<ZVItemView> items;
    std::shared_ptr<ZVRecommendation> recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> delegate;
    ZVVideoList videoCells;
};

ZVListView::Private::Private(ZVListView *list)
    : q(list), content(u"ZVListView"_s, list), items(qobject_cast<ZVItemView *>(content.root()))
{
    if (!items)
        return;
    items->setDataSource(this);
    connect(items, &QQuickItem::widthChanged, q, [this] { fitCells(); });
}

ZVListView::Private::~Private()
{
    if (items)
        items->setDataSource(nullptr);
}

ZVListView::ZVListView() : d(std::make_unique<Private>(this)) {}
ZVListView::~ZVListView() = default;

std::shared_ptr<ZVListView> ZVListView::create()
{
    return {new ZVListView, MainThreadDeleter{}};
}

QQuickItem *ZVListView::view() const
{
    return d->items;
}

std::shared_ptr<ZVRecommendation> ZVListView::recommendations() const
{
    return d->recommendations;
}

std::shared_ptr<ZVRecommendationViewDelegate> ZVListView::delegate() const
{
    return d->delegate.lock();
}

void ZVListView::setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate)
{
    d->delegate = delegate;
}

const ZVVideoList &ZVListView::videoCells() const
{
    return d->videoCells;
}

// Filling

void ZVListView::setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations)
{
    d->recommendations = recommendations;
    if (!recommendations)
        return;
    const auto filling = std::make_shared<Filling>();
    filling->videos = recommendations->videoList();
    for (const auto &video : d->videoCells)
        filling->knownIds.insert(idOf(*video));
    d->fetchThumbnails(filling, fetchesAtFirst);
}

/// Fetches a long list in portions, so that the first cells and the host do not wait for all of it. A portion waits for
/// the one before, so that cached pictures keep their order.
void ZVListView::Private::fetchThumbnails(const std::shared_ptr<Filling> &filling, std::size_t count)
{
    MainQueue::shared().cancelPreviousPerformRequests(filling.get());
    const double width = std::max(cellWidth(), leastPicture);
    const auto cell = items ? Thumbnails::pixels({width, width}, items) : QSize();
    const auto fetchNext = [weak = q->weak_from_this(), filling] {
        if (const auto self = weak.lock())
            self->d->fetchThumbnails(filling, fetchesAtOnce);
    };
    const auto pause = filling->next == 0 ? aFrame : aFrame.zero(); // The first cells are visible first.
    const auto awaited = std::make_shared<std::size_t>(0);
    while (*awaited < count) {
        const auto video = filling->take();
        if (!video)
            return;
        ++*awaited;
        // Intended order: the cell is inserted, as a square, before the record gets its image.
        thumbnails.fetch(video, cell, [=, this] {
            insert(video);
            if (--*awaited == 0)
                MainQueue::shared().performAfterDelay(filling.get(), pause, fetchNext);
        });
    }
    MainQueue::shared().performAfterDelay(filling.get(), longestWait, fetchNext);
}

void ZVListView::insertNewRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    if (!video)
        return;
    d->thumbnails.leaveOut(video);
    d->insert(video);
}

void ZVListView::Private::insert(const std::shared_ptr<ZVVideoParams> &video)
{
    setRatio(*video, ratioOf(video->image()));
    videoCells.push_back(video);
    if (items)
        items->polish(); // The view asks for their number.
    if (recommendations && videoCells.size() == recommendations->videoCount())
        sortCells();
}

void ZVListView::Private::sortCells()
{
    std::stable_sort(videoCells.begin(), videoCells.end(),
                     [](const auto &one, const auto &other) { return one->index() < other->index(); });
    // All cells: videos of an earlier recommendation share their indexes with later ones.
    if (items)
        items->reloadData();
}

/// Keeps two columns at any width, and the shape of each cell.
void ZVListView::Private::fitCells()
{
    if (videoCells.empty() || items->width() <= 0)
        return;
    for (const auto &video : videoCells) {
        const auto size = video->size();
        setRatio(*video, size.width() > 0 ? size.height() / size.width() : 1.0);
    }
    items->reloadData();
}

// ZVItemViewDataSource

void ZVListView::Private::cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell)
{
    if (auto *const videoCell = qobject_cast<ZVVideoCollectionViewCell *>(cell))
        videoCell->show(videoCells[static_cast<std::size_t>(row)], &thumbnails);
}

void ZVListView::Private::didSelectItemAtIndexPath(qint64 row)
{
    const auto list = recommendations ? recommendations->videoList() : ZVVideoList();
    if (row < 0 || row >= static_cast<qint64>(list.size())) {
        ZV_LOG("Error: the recommendation has no video " << row << " of " << list.size());
        return;
    }
    // Intended: by row, not by the video that the cell shows. Hosts of the unsorted list rely on this order.
    report(list[static_cast<std::size_t>(row)], delegate, items);
}

} // namespace zelvano
