#include "ZVRecommendationTableViewCell.h"

#include "ZVVideoCollectionViewCell.h"

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

const auto cellIdentifier = u"videoCell"_s;

} // namespace

ZVRecommendationTableViewCell::ZVRecommendationTableViewCell() = default;

ZVRecommendationTableViewCell::~ZVRecommendationTableViewCell()
{
    if (m_videosCollectionView)
        m_videosCollectionView->setDataSource(nullptr);
}

ZVRecommendationTableViewCell *ZVRecommendationTableViewCell::create()
{
    std::unique_ptr<ZVRecommendationTableViewCell> cell(new ZVRecommendationTableViewCell);
    return cell->load() ? cell.release() : nullptr;
}

bool ZVRecommendationTableViewCell::load()
{
    if (!loadContent(u"ZVRecommendationTableViewCell"_s))
        return false;
    m_categoryLabel = outlet(u"categoryLabel"_s);
    m_videosCollectionView = qobject_cast<ZVCollectionView *>(outlet(u"videosCollectionView"_s));
    if (m_videosCollectionView) {
        m_videosCollectionView->registerCell(cellIdentifier, &ZVVideoCollectionViewCell::create);
        m_videosCollectionView->setDataSource(this);
    }
    return true;
}

void ZVRecommendationTableViewCell::setCategory(const QString &category)
{
    m_category = category;
    if (m_categoryLabel)
        m_categoryLabel->setProperty("text", category);
}

void ZVRecommendationTableViewCell::setRecommendations(const ZVVideoList &videos)
{
    m_recommendations = videos;
    if (m_videosCollectionView)
        m_videosCollectionView->reloadData();
}

void ZVRecommendationTableViewCell::videoDidChange(const std::shared_ptr<ZVVideoParams> &video)
{
    if (!m_videosCollectionView)
        return;
    for (auto *const cell : m_videosCollectionView->shownCells()) {
        if (videoAt(cell->row()) == video)
            static_cast<ZVVideoCollectionViewCell *>(cell)->setParams(video);
    }
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
}

bool ZVRecommendationTableViewCell::handleKey(QKeyEvent *event)
{
    return m_videosCollectionView && m_videosCollectionView->handleKey(event);
}

std::shared_ptr<ZVVideoParams> ZVRecommendationTableViewCell::videoAt(qint64 row) const
{
    const bool exists = row >= 0 && row < static_cast<qint64>(m_recommendations.size());
    return exists ? m_recommendations[static_cast<std::size_t>(row)] : nullptr;
}

qint64 ZVRecommendationTableViewCell::numberOfItemsInSection(ZVCollectionView *, qint64)
{
    return static_cast<qint64>(m_recommendations.size());
}

ZVItemViewCell *ZVRecommendationTableViewCell::cellForItemAtIndexPath(ZVCollectionView *view, const IndexPath &path)
{
    auto *const cell = view->dequeueReusableCell(cellIdentifier);
    const auto video = videoAt(path.row);
    if (!cell || !video)
        return cell;
    static_cast<ZVVideoCollectionViewCell *>(cell)->setParams(video);
    Q_EMIT willShowVideo(video);
    return cell;
}

void ZVRecommendationTableViewCell::didSelectItemAtIndexPath(ZVCollectionView *, const IndexPath &path)
{
    const auto video = videoAt(path.row);
    const auto listener = delegate();
    if (video && listener)
        listener->didSelecteRecommendation(video);
}

} // namespace zelvano
