#include <ZelvanoUI/ZVCategoryView.h>

#include "InterfaceResource.h"
#include "ZVRecommendationTableViewCell.h"
#include "ZVTableView.h"
#include <ZelvanoUI/MainThread.h>
#include <ZelvanoUI/ZVImagesFetcher.h>

#include <QPointer>

#include <unordered_set>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

const auto cellIdentifier = u"categoryCell"_s;

} // namespace

struct ZVCategoryView::Private : public ZVTableViewDataSource
{
    explicit Private(ZVCategoryView *view);
    ~Private() override;

    ZVItemViewCell *createRow();
    std::vector<ZVRecommendationTableViewCell *> shownRows() const;
    void fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video);
    void imageDidArrive(const std::shared_ptr<ZVVideoParams> &video);

    // ZVTableViewDataSource
    qint64 numberOfRowsInSection(ZVTableView *, qint64) override
    {
        return recommendations ? recommendations->categories().size() : 0;
    }
    ZVItemViewCell *cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path) override;

    ZVCategoryView *const q;
    InterfaceResource content;
    const QPointer<ZVTableView> table;
    std::shared_ptr<ZVRecommendation> recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> delegate;
    bool loadsThumbnails = false;
    std::unordered_set<std::shared_ptr<ZVVideoParams>> requested; ///< Whatever the result.
};

ZVCategoryView::Private::Private(ZVCategoryView *view)
    : q(view), content(u"ZVCategoryView"_s, view), table(qobject_cast<ZVTableView *>(content.root()))
{
    if (!table)
        return;
    table->registerCell(cellIdentifier, [this] { return createRow(); });
    table->setActiveFocusOnTab(true);
    table->setDataSource(this);
}

ZVCategoryView::Private::~Private()
{
    if (table)
        table->setDataSource(nullptr);
}

ZVCategoryView::ZVCategoryView() : d(std::make_unique<Private>(this)) {}
ZVCategoryView::~ZVCategoryView() = default;

std::shared_ptr<ZVCategoryView> ZVCategoryView::create()
{
    return {new ZVCategoryView, MainThreadDeleter{}};
}

QQuickItem *ZVCategoryView::view() const
{
    return d->table;
}

std::shared_ptr<ZVRecommendation> ZVCategoryView::recommendations() const
{
    return d->recommendations;
}

std::shared_ptr<ZVRecommendationViewDelegate> ZVCategoryView::delegate() const
{
    return d->delegate.lock();
}

ZVItemViewCell *ZVCategoryView::Private::createRow()
{
    auto *const row = ZVRecommendationTableViewCell::create();
    if (row)
        connect(row, &ZVRecommendationTableViewCell::willShowVideo, q,
                [this](const auto &video) { fetchThumbnail(video); });
    return row;
}

std::vector<ZVRecommendationTableViewCell *> ZVCategoryView::Private::shownRows() const
{
    std::vector<ZVRecommendationTableViewCell *> rows;
    for (auto *const cell : table ? table->shownCells() : std::vector<ZVItemViewCell *>())
        rows.push_back(static_cast<ZVRecommendationTableViewCell *>(cell));
    return rows;
}

void ZVCategoryView::setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations)
{
    d->recommendations = recommendations;
    d->requested.clear();
    if (d->table)
        d->table->reloadData();
}

void ZVCategoryView::setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate)
{
    d->delegate = delegate;
    for (auto *const row : d->shownRows())
        row->setDelegate(delegate);
}

// Thumbnails

bool ZVCategoryView::loadsThumbnails() const
{
    return d->loadsThumbnails;
}

void ZVCategoryView::setLoadsThumbnails(bool loads)
{
    d->loadsThumbnails = loads;
    if (d->table)
        d->table->reloadData();
}

void ZVCategoryView::Private::fetchThumbnail(const std::shared_ptr<ZVVideoParams> &video)
{
    if (!loadsThumbnails || !video->image().isNull() || !requested.insert(video).second)
        return;
    ZVImagesFetcher::fetchThumbnail(video, [weak = q->weak_from_this(), video] {
        if (const auto self = weak.lock())
            self->d->imageDidArrive(video);
    });
}

void ZVCategoryView::Private::imageDidArrive(const std::shared_ptr<ZVVideoParams> &video)
{
    for (auto *const row : shownRows()) {
        if (row->category() == video->category())
            row->videoDidChange(video);
    }
}

// ZVTableViewDataSource

ZVItemViewCell *ZVCategoryView::Private::cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path)
{
    auto *const row = static_cast<ZVRecommendationTableViewCell *>(view->dequeueReusableCell(cellIdentifier));
    if (!row || !recommendations)
        return row;
    const auto category = recommendations->categories().value(path.row);
    row->setDelegate(delegate.lock());
    row->setCategory(category);
    row->setRecommendations(recommendations->videosForCategory(category).value_or(ZVVideoList()));
    row->setWidth(view->width());
    return row;
}

} // namespace zelvano
