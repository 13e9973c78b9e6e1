#include <ZelvanoUI/ZVCategoryView.h>

#include "InterfaceResource.h"
#include "ZVRecommendationTableViewCell.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/ZVImagesFetcher.h>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

const auto cellIdentifier = u"categoryCell"_s;

} // namespace

ZVCategoryView::ZVCategoryView()
{
    m_content = std::make_unique<InterfaceResource>(u"ZVCategoryView"_s, this);
    m_view = qobject_cast<ZVTableView *>(m_content->root());
    if (!m_view)
        return;
    m_view->registerCell(cellIdentifier, [this] { return createRow(); });
    m_view->setActiveFocusOnTab(true);
    m_view->setDataSource(this);
}

ZVCategoryView::~ZVCategoryView()
{
    if (m_view)
        m_view->setDataSource(nullptr);
}

std::shared_ptr<ZVCategoryView> ZVCategoryView::create()
{
    return {new ZVCategoryView, MainThreadDeleter{}};
}

QQuickItem *ZVCategoryView::view() const
{
    return m_view;
}

ZVItemViewCell *ZVCategoryView::createRow()
{
    auto *const row = ZVRecommendationTableViewCell::create();
    if (row)
        connect(row, &ZVRecommendationTableViewCell::willShowVideo, this, &ZVCategoryView::fetchThumbnail);
    return row;
}

std::vector<ZVRecommendationTableViewCell *> ZVCategoryView::shownRows() const
{
    std::vector<ZVRecommendationTableViewCell *> rows;
    for (auto *const cell : m_view ? m_view->shownCells() : std::vector<ZVItemViewCell *>())
        rows.push_back(static_cast<ZVRecommendationTableViewCell *>(cell));
    return rows;
}

void ZVCategoryView::setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations)
{
    m_recommendations = recommendations;
    m_fetched.clear();
    if (m_view)
        m_view->reloadData();
}

void ZVCategoryView::setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate)
{
    m_delegate = delegate;
    for (auto *const row : shownRows())
        row->setDelegate(delegate);
}

// Thumbnails

void ZVCategoryView::setLoadsThumbnails(bool loads)
{
    m_loadsThumbnails = loads;
    if (m_view)
        m_view->reloadData();
}

void ZVCategoryView::fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video)
{
    if (!m_loadsThumbnails || !video->image().isNull() || !m_fetched.insert(video).second)
        return;
    ZVImagesFetcher::fetchThumbnail(video, [weak = weak_from_this(), video] {
        if (const auto self = weak.lock())
            self->imageDidArrive(video);
    });
}

void ZVCategoryView::imageDidArrive(const std::shared_ptr<ZVVideoParams> &video)
{
    for (auto *const row : shownRows()) {
        if (row->category() == video->category())
            row->videoDidChange(video);
    }
}

// ZVTableViewDataSource

qint64 ZVCategoryView::numberOfRowsInSection(ZVTableView *, qint64)
{
    return m_recommendations ? m_recommendations->categories().size() : 0;
}

ZVItemViewCell *ZVCategoryView::cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path)
{
    auto *const row = static_cast<ZVRecommendationTableViewCell *>(view->dequeueReusableCell(cellIdentifier));
    if (!row || !m_recommendations)
        return row;
    const auto category = m_recommendations->categories().value(path.row);
    row->setDelegate(delegate());
    row->setCategory(category);
    row->setRecommendations(m_recommendations->videosForCategory(category).value_or(ZVVideoList()));
    row->setWidth(view->width());
    return row;
}

} // namespace zelvano
