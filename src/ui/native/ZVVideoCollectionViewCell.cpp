#include "ZVVideoCollectionViewCell.h"

#include "CategoryName.h"
#include "CellHost.h"
#include "JsonReading.h"
#include "Logging.h"
#include "Thumbnails.h"
#include <ZelvanoUI/ZVListView.h>
#include <ZelvanoUI/ZVVideoParams.h>

#include <QPropertyAnimation>

#include <algorithm>
#include <limits>
#include <utility>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr auto fadeDuration = 500; // Milliseconds.

} // namespace

CellHost::~CellHost() = default;

ZVVideoCollectionViewCell::~ZVVideoCollectionViewCell()
{
    leaveVideo();
}

void ZVVideoCollectionViewCell::componentComplete()
{
    m_shadowOffset = size() * double(shadowWidthPercent);
    setClip(true); // Intended, and last: the cell's edge cuts off the shadow.
    if (view())
        connect(view(), &ZVItemView::countChanged, this, &ZVVideoCollectionViewCell::spokenNameChanged);
    ZVItemViewCell::componentComplete();
}

// The thumbnail

void ZVVideoCollectionViewCell::show(const std::shared_ptr<ZVVideoParams> &video, Thumbnails *thumbnails)
{
    if (m_video != video || m_thumbnails != thumbnails) {
        leaveVideo();
        m_video = video;
        m_thumbnails = thumbnails;
        if (thumbnails) {
            connect(thumbnails, &Thumbnails::imageDidChange, this, &ZVVideoCollectionViewCell::imageDidChange,
                    Qt::UniqueConnection);
            thumbnails->show(video, Thumbnails::pixels(size(), this));
        }
    }
    setParams(video);
}

void ZVVideoCollectionViewCell::leaveVideo()
{
    if (m_thumbnails && m_video)
        m_thumbnails->hide(m_video);
    m_video.reset();
}

void ZVVideoCollectionViewCell::prepareForReuse()
{
    leaveVideo();
    m_image = {};
    showImage();
}

void ZVVideoCollectionViewCell::imageDidChange(const std::shared_ptr<ZVVideoParams> &video)
{
    if (video != m_video)
        return;
    m_image = video->image();
    showImage();
    fitThumbnail();
    offerToHost(video);
}

void ZVVideoCollectionViewCell::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    ZVItemViewCell::geometryChange(newGeometry, oldGeometry);
    fitThumbnail();
}

void ZVVideoCollectionViewCell::fitThumbnail()
{
    if (m_thumbnails && m_video)
        m_thumbnails->resize(m_video, Thumbnails::pixels(size(), this));
}

void ZVVideoCollectionViewCell::setIconImageView(ZVImageView *view)
{
    m_iconImageView = view;
    showImage();
}

void ZVVideoCollectionViewCell::showImage()
{
    if (!m_iconImageView)
        return;
    m_iconImageView->setImage(m_image);
    if (m_image.isNull() || m_iconImageView->opacity() != 0 || m_iconImageView->findChild<QPropertyAnimation *>())
        return; // Nothing to fade in, or already started: its first frame is still to come.
    auto *const fade = new QPropertyAnimation(m_iconImageView, "opacity", m_iconImageView);
    fade->setDuration(fadeDuration);
    fade->setEndValue(1.0);
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void ZVVideoCollectionViewCell::setParams(const std::shared_ptr<ZVVideoParams> &params)
{
    if (!params)
        return;
    m_image = params->image();
    showImage();
    m_title = params->title();
    m_duration = secToTime(params->durationSec());
    m_category = params->category();
    m_value = QString::number(params->index()); // Intended: the position in the list, not percentValue.
    Q_EMIT paramsChanged();
    Q_EMIT spokenNameChanged();
    offerToHost(params);
}

/// Title, length, category and position, as far as they are known.
QString ZVVideoCollectionViewCell::spokenName() const
{
    QStringList parts{m_title, m_duration, nameOfCategory(m_category)};
    if (view())
        parts.append(QCoreApplication::translate("ZelvanoUI", "%1 of %2").arg(row() + 1).arg(view()->itemCount()));
    parts.removeAll({});
    return parts.join(", "_L1);
}

void ZVVideoCollectionViewCell::offerToHost(const std::shared_ptr<ZVVideoParams> &video)
{
    CellHost *host = nullptr;
    for (auto *item = parentItem(); item && !host; item = item->parentItem())
        host = dynamic_cast<CellHost *>(item);
    const bool isShown = host && host->showInCell(this, video);
    if (std::exchange(m_isShownByHost, isShown) != isShown)
        Q_EMIT shownByHostChanged();
}

QString ZVVideoCollectionViewCell::secToTime(const QJsonValue &seconds)
{
    if (seconds.isNull()) {
        ZV_LOG("Error(secToTime):: duration is <null>");
        return {};
    }
    const auto whole = static_cast<int>(std::clamp<qint64>(
        json::integerValue(seconds), std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
    return QString::asprintf("%d:%02d", whole / 60, whole % 60);
}

QColor ZVVideoCollectionViewCell::colorForCategory(const QString &category)
{
    constexpr float alpha = 0.55F;
    if (category == "FORYOU"_L1)
        return QColor::fromRgbF(1.0F, 0.0F, 0.0F, alpha);
    if (category == "MOSTVIEWED"_L1)
        return QColor::fromRgbF(0.0F, 1.0F, 0.0F, alpha);
    if (category == "MOSTRECENT"_L1)
        return QColor::fromRgbF(0.5F, 0.5F, 0.5F, alpha);
    return QColor(0, 0, 0, 0);
}

} // namespace zelvano
