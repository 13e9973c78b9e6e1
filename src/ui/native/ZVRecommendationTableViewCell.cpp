#include "ZVRecommendationTableViewCell.h"

#include "Choice.h"
#include "Thumbnails.h"
#include "ZVVideoCollectionViewCell.h"

namespace zelvano {

void ZVRecommendationTableViewCell::setVideosCollectionView(ZVItemView *view)
{
    if (m_videosCollectionView)
        m_videosCollectionView->setDataSource(nullptr);
    m_videosCollectionView = view;
    if (view)
        view->setDataSource(this);
}

void ZVRecommendationTableViewCell::setCategory(const QString &category)
{
    m_category = category;
    Q_EMIT categoryChanged();
}

void ZVRecommendationTableViewCell::setRecommendations(const ZVVideoList &videos)
{
    m_recommendations = videos;
    if (m_videosCollectionView)
        m_videosCollectionView->reloadData();
}

void ZVRecommendationTableViewCell::setThumbnails(Thumbnails *thumbnails)
{
    m_thumbnails = thumbnails;
}

void ZVRecommendationTableViewCell::setCurrent(bool current)
{
    ZVItemViewCell::setCurrent(current);
    if (m_videosCollectionView)
        m_videosCollectionView->setShowsCurrent(current);
}

/// The next category starts at its first video.
void ZVRecommendationTableViewCell::prepareForReuse()
{
    if (!m_videosCollectionView)
        return;
    m_videosCollectionView->scrollToStart();
    m_videosCollectionView->setCurrentRow(0);
    for (auto *const cell : m_videosCollectionView->shownCells())
        cell->prepareForReuse();
}

bool ZVRecommendationTableViewCell::handleKey(QKeyEvent *event)
{
    return m_videosCollectionView && m_videosCollectionView->handleKey(event);
}

// ZVItemViewDataSource

void ZVRecommendationTableViewCell::cellForItemAtIndexPath(qint64 row, ZVItemViewCell *cell)
{
    if (auto *const videoCell = qobject_cast<ZVVideoCollectionViewCell *>(cell))
        videoCell->show(m_recommendations[static_cast<std::size_t>(row)], m_thumbnails);
}

void ZVRecommendationTableViewCell::didSelectItemAtIndexPath(qint64 row)
{
    const auto index = static_cast<std::size_t>(row);
    if (index < m_recommendations.size()) // The cells may still be those of longer recommendations.
        report(m_recommendations[index], m_delegate, view());
}

} // namespace zelvano
