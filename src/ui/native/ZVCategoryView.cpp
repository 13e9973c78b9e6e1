#include <ZelvanoUI/ZVCategoryView.h>

#include "InterfaceResource.h"
#include "Thumbnails.h"
#include "ZVRecommendationTableViewCell.h"
#include <ZelvanoUI/MainThread.h>

#include <QPointer>

namespace zelvano {

using namespace Qt::StringLiterals;

struct ZVCategoryView::Private : public ZVItemViewDataSource
{
    explicit Private(ZVCategoryView *view);
    ~Private() override;

    // ZVItemViewDataSource. The viewer chooses within an item.
    qint64 numberOfItemsInSection() const override
    {
        return recommendations ? recommendations->categories().size() : 0;
    }
    void cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell) override;

    Thumbnails thumbnails;
    InterfaceResource content;
    const QPointer<ZVItemView> table;
    std::shared_ptr<ZVRecommendation> recommendations;
    std::weak_ptr<ZVRecommendationViewDelegate> delegate;
    bool loadsThumbnails = false;
};

ZVCategoryView::Private::Private(ZVCategoryView *view)
    : content(u"ZVCategoryView"_s, view), table(qobject_cast<ZVItemView *>(content.root()))
{
    if (table)
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

void ZVCategoryView::setRecommendations(const std::shared_ptr<ZVRecommendation> &recommendations)
{
    d->recommendations = recommendations;
    if (d->table)
        d->table->reloadData();
}

void ZVCategoryView::setDelegate(const std::shared_ptr<ZVRecommendationViewDelegate> &delegate)
{
    d->delegate = delegate;
    for (auto *const cell : d->table ? d->table->shownCells() : std::vector<ZVItemViewCell *>()) {
        if (auto *const row = qobject_cast<ZVRecommendationTableViewCell *>(cell))
            row->setDelegate(delegate);
    }
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

bool ZVCategoryView::showsBadges() const
{
    return d->table && d->table->property("badged").toBool();
}

void ZVCategoryView::setShowsBadges(bool shows)
{
    if (d->table)
        d->table->setProperty("badged", shows);
}

// ZVItemViewDataSource

void ZVCategoryView::Private::cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell)
{
    auto *const categoryCell = qobject_cast<ZVRecommendationTableViewCell *>(cell);
    if (!categoryCell || !recommendations)
        return;
    const auto category = recommendations->categories().value(row);
    categoryCell->setDelegate(delegate.lock());
    categoryCell->setThumbnails(loadsThumbnails ? &thumbnails : nullptr);
    categoryCell->setCategory(category);
    categoryCell->setRecommendations(recommendations->videosForCategory(category).value_or(ZVVideoList()));
    categoryCell->setWidth(table->width());
}

} // namespace zelvano
