#include <ZelvanoUI/ZVListView.h>

#include "InterfaceResource.h"
#include "Logging.h"
#include "MainQueue.h"
#include "ZVVideoCollectionViewCell.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/ZVImagesFetcher.h>

#include <algorithm>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

const auto cellIdentifier = u"videoCell"_s;
constexpr std::size_t fetchesAtOnce = 250;

double ratioOf(const QImage &image)
{
    return image.isNull() ? 1.0 : double(image.height()) / image.width();
}

} // namespace

ZVListView::ZVListView()
{
    m_content = std::make_unique<InterfaceResource>(u"ZVListView"_s, this);
    m_view = qobject_cast<ZVCollectionView *>(m_content->root());
    if (!m_view)
        return;
    m_view->registerCell(cellIdentifier, &ZVVideoCollectionViewCell::create);
    m_view->setActiveFocusOnTab(true);
    m_view->setDataSource(this);
    connect(m_view, &QQuickItem::widthChanged, this, &ZVListView::fitCells);
}

ZVListView::~ZVListView()
{
    if (m_view)
        m_view->setDataSource(nullptr);
}

std::shared_ptr<ZVListView> ZVListView::create()
{
    return {new ZVListView, MainThreadDeleter{}};
}

QQuickItem *ZVListView::view() const
{
    return m_view;
}

// Filling

void ZVListView::setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations)
{
    m_recommendations = recommendations;
    const auto list = recommendations ? recommendations->videoList() : ZVVideoList();
    const auto missing = std::make_shared<ZVVideoList>();
    // Backwards: a record that stands in the list twice has its first place's index.
    for (auto i = list.size(); i-- > 0;) {
        const auto &video = list[i];
        // Compared with what has a cell, not with what is on its way: two of one id in one list both come in.
        if (!video || isKnown(video->videoId()))
            continue;
        video->setIndex(static_cast<qint64>(i));
        missing->push_back(video);
    }
    std::ranges::reverse(*missing);
    fetchThumbnails(missing, 0);
}

/// The rest of a long list waits for its turn: neither the first cells nor the host wait for it.
void ZVListView::fetchThumbnails(const std::shared_ptr<const ZVVideoList> &videos, std::size_t first)
{
    const auto end = std::min(first + fetchesAtOnce, videos->size());
    for (auto i = first; i < end; ++i)
        fetchThumbnail((*videos)[i]);
    if (end == videos->size())
        return;
    MainQueue::shared().post([weak = weak_from_this(), videos, end] {
        if (const auto self = weak.lock())
            self->fetchThumbnails(videos, end);
    });
}

void ZVListView::fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video)
{
    const auto insert = [weak = weak_from_this(), video] {
        if (const auto self = weak.lock())
            self->insertNewRecommendation(video);
    };
    const auto update = [weak = weak_from_this(), video] {
        if (const auto self = weak.lock())
            self->imageDidArrive(video);
    };
    ZVImagesFetcher::fetchThumbnail(video, update, insert);
}

void ZVListView::insertNewRecommendation(const std::shared_ptr<ZVVideoParams> &video)
{
    if (!video)
        return;
    m_inset = double(insetProportion) * (m_view ? m_view->width() : 0);
    const double width = cellWidth();
    video->setSize({width, width * ratioOf(video->image())});
    m_videoCells.push_back(video);
    remember(video->videoId());
    if (m_view)
        m_view->insertItemAtEnd();
    if (m_recommendations && m_videoCells.size() == m_recommendations->videoCount())
        sortCells();
}

/// The view may have made the cell before the image came.
void ZVListView::imageDidArrive(const std::shared_ptr<ZVVideoParams> &video)
{
    for (auto *const cell : m_view ? m_view->shownCells() : std::vector<ZVItemViewCell *>()) {
        if (videoAt(cell->row()) == video)
            static_cast<ZVVideoCollectionViewCell *>(cell)->setParams(video);
    }
}

void ZVListView::sortCells()
{
    std::stable_sort(m_videoCells.begin(), m_videoCells.end(),
                     [](const auto &one, const auto &other) { return one->index() < other->index(); });
    // All of them: those kept from an earlier recommendation may stand in one another's places.
    if (m_view)
        m_view->reloadData();
}

/// Two columns whatever the width; each cell keeps its shape.
void ZVListView::fitCells()
{
    if (m_videoCells.empty() || m_view->width() <= 0)
        return;
    m_inset = double(insetProportion) * m_view->width();
    const double width = cellWidth();
    for (const auto &video : m_videoCells) {
        const auto size = video->size();
        const double ratio = size.width() > 0 ? size.height() / size.width() : 1.0;
        video->setSize({width, width * ratio});
    }
    m_view->invalidateLayout();
}

double ZVListView::cellWidth() const
{
    return m_view ? (m_view->width() - 3 * m_inset) / 2 : 0;
}

bool ZVListView::isKnown(const QString &videoId) const
{
    return videoId.isNull() ? m_knowsVideoWithoutId : m_knownIds.contains(videoId);
}

void ZVListView::remember(const QString &videoId)
{
    if (videoId.isNull())
        m_knowsVideoWithoutId = true;
    else
        m_knownIds.insert(videoId);
}

std::shared_ptr<ZVVideoParams> ZVListView::videoAt(qint64 row) const
{
    const bool exists = row >= 0 && row < static_cast<qint64>(m_videoCells.size());
    return exists ? m_videoCells[static_cast<std::size_t>(row)] : nullptr;
}

// ZVCollectionViewDataSource

qint64 ZVListView::numberOfItemsInSection(ZVCollectionView *, qint64)
{
    return static_cast<qint64>(m_videoCells.size());
}

ZVItemViewCell *ZVListView::cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path)
{
    auto *const cell = view->dequeueReusableCell(cellIdentifier);
    if (cell)
        static_cast<ZVVideoCollectionViewCell *>(cell)->setParams(videoAt(path.row));
    return cell;
}

QSizeF ZVListView::sizeForItemAtIndexPath(ZVCollectionView *, const IndexPath &path)
{
    const auto video = videoAt(path.row);
    return video ? video->size() : QSizeF(0, 0);
}

double ZVListView::minimumLineSpacingForSectionAtIndex(ZVCollectionView *, qint64)
{
    return m_inset;
}

double ZVListView::minimumInteritemSpacingForSectionAtIndex(ZVCollectionView *, qint64)
{
    return m_inset;
}

QMarginsF ZVListView::insetForSectionAtIndex(ZVCollectionView *, qint64)
{
    return {m_inset, m_inset, m_inset, m_inset};
}

void ZVListView::didSelectItemAtIndexPath(ZVCollectionView *, const IndexPath &path)
{
    const auto list = m_recommendations ? m_recommendations->videoList() : ZVVideoList();
    if (path.row < 0 || path.row >= static_cast<qint64>(list.size())) {
        ZV_LOG("Error: the recommendation has no video " << path.row << " of " << list.size());
        return;
    }
    // By row, not by what the cell shows; hosts of the unsorted list rely on the recommendation's order.
    if (const auto listener = delegate())
        listener->didSelecteRecommendation(list[static_cast<std::size_t>(path.row)]);
}

} // namespace zelvano
