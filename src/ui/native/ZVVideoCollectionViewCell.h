#pragma once

#include "ZVImageView.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <QColor>
#include <QJsonValue>
#include <QSizeF>

#include <memory>

namespace zelvano {

class Thumbnails;
class ZVVideoParams;

/// Size of the cell's shadow, as a share of the cell's size.
inline constexpr float shadowWidthPercent = 0.03F;
/// For hosts; the library does not use it.
inline constexpr float textHeightPercent = 0.15F;

/// One recommended video: thumbnail, title, length and a badge in its category's colour. Main thread.
class ZELVANOUI_EXPORT ZVVideoCollectionViewCell : public zelvano::ZVItemViewCell
{
    Q_OBJECT
    QML_NAMED_ELEMENT(VideoCell)
    /// For screen readers.
    Q_PROPERTY(QString spokenName READ spokenName NOTIFY spokenNameChanged FINAL)
    /// Whether the badge is visible.
    Q_PROPERTY(bool badged MEMBER m_isBadged NOTIFY badgedChanged FINAL)
    /// Whether an item around the view shows the video. The cell then shows neither picture nor texts.
    Q_PROPERTY(bool shownByHost READ isShownByHost NOTIFY shownByHostChanged FINAL)

public:
    ZVVideoCollectionViewCell();
    ~ZVVideoCollectionViewCell() override;

    /// Fills the cell, and fills it again when the thumbnails, which may be null, have another picture.
    void show(const std::shared_ptr<ZVVideoParams> &video, Thumbnails *thumbnails);
    /// Fills the cell.
    void setParams(const std::shared_ptr<ZVVideoParams> &params);
    /// Always null, intended: setParams() does not store the video.
    std::shared_ptr<ZVVideoParams> params() const { return nullptr; }

    QString spokenName() const;
    Q_SIGNAL void spokenNameChanged();
    Q_SIGNAL void badgedChanged();
    bool isShownByHost() const { return m_isShownByHost; }
    Q_SIGNAL void shownByHostChanged();

    // The outlets; null when the interface resource lacks one.
    QQuickItem *titleLable() const { return m_titleLable; }
    QQuickItem *durationLabel() const { return m_durationLabel; }
    QQuickItem *valueLabel() const { return m_valueLabel; }
    QQuickItem *valueHolderView() const { return m_valueHolderView; }
    ZVImageView *iconImageView() const { return m_iconImageView; }
    void setIconImageView(ZVImageView *view) { m_iconImageView = view; }

    // In points. The interface resource decides what draws a shadow.
    QSizeF shadowOffset() const { return m_shadowOffset; }
    double shadowRadius() const { return m_shadowRadius; }
    double shadowOpacity() const { return m_shadowOpacity; }

    /// Minutes and seconds without hours, such as "61:05". An absent value counts as 0. A JSON null is logged and gives
    /// a null string.
    static QString secToTime(const QJsonValue &seconds);
    /// Transparent for an unknown code; case-sensitive.
    static QColor colorForCategory(const QString &category);

    // ZVItemViewCell
    void prepareForReuse() override;

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void leaveVideo();
    void imageDidChange(const std::shared_ptr<ZVVideoParams> &video);
    void fadeIn();
    void fitTitle();
    void offerToHost(const std::shared_ptr<ZVVideoParams> &video);

    // For the spoken name. The category is the service's code.
    QString m_title;
    QString m_duration;
    QString m_category;
    bool m_isBadged = true;
    bool m_isShownByHost = false;
    QPointer<Thumbnails> m_thumbnails;
    std::shared_ptr<ZVVideoParams> m_video; ///< For the thumbnails alone; params() does not return it.

    QPointer<QQuickItem> m_titleLable;
    QPointer<QQuickItem> m_durationLabel;
    QPointer<QQuickItem> m_valueLabel;
    QPointer<QQuickItem> m_valueHolderView;
    QPointer<ZVImageView> m_iconImageView;
    QSizeF m_shadowOffset;
    double m_shadowRadius = 0;
    double m_shadowOpacity = 0;
};

} // namespace zelvano
