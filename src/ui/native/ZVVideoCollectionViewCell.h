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

/// One recommended video: thumbnail, title, length and a badge in its category's colour. The interface resource has the
/// outlets titleLable, durationLabel, valueLabel, valueHolderView and iconImageView. Main thread.
class ZELVANOUI_EXPORT ZVVideoCollectionViewCell : public zelvano::ZVItemViewCell
{
    Q_OBJECT
    QML_NAMED_ELEMENT(VideoCell)
    // The values of the outlets. The thumbnail's is set by the interface resource.
    Q_PROPERTY(QString title MEMBER m_title NOTIFY paramsChanged FINAL)
    Q_PROPERTY(QString duration MEMBER m_duration NOTIFY paramsChanged FINAL)
    Q_PROPERTY(QString value MEMBER m_value NOTIFY paramsChanged FINAL)
    Q_PROPERTY(QColor categoryColor READ categoryColor NOTIFY paramsChanged FINAL)
    Q_PROPERTY(zelvano::ZVImageView *iconImageView READ iconImageView WRITE setIconImageView FINAL)
    /// For screen readers.
    Q_PROPERTY(QString spokenName READ spokenName NOTIFY spokenNameChanged FINAL)
    /// Whether an item around the view shows the video. The cell then shows neither picture nor texts.
    Q_PROPERTY(bool shownByHost READ isShownByHost NOTIFY shownByHostChanged FINAL)

public:
    ~ZVVideoCollectionViewCell() override;

    /// Fills the cell, and shows the picture when the thumbnails, which may be null, have another one.
    void show(const std::shared_ptr<ZVVideoParams> &video, Thumbnails *thumbnails);
    /// Fills the cell.
    void setParams(const std::shared_ptr<ZVVideoParams> &params);
    /// Always null, intended: setParams() does not store the video.
    std::shared_ptr<ZVVideoParams> params() const { return nullptr; }

    Q_SIGNAL void paramsChanged();
    QColor categoryColor() const { return colorForCategory(m_category); }
    /// Null when the interface resource has none.
    ZVImageView *iconImageView() const { return m_iconImageView; }
    void setIconImageView(ZVImageView *view);
    QString spokenName() const;
    Q_SIGNAL void spokenNameChanged();
    bool isShownByHost() const { return m_isShownByHost; }
    Q_SIGNAL void shownByHostChanged();

    // In points. The interface resource decides what draws a shadow.
    QSizeF shadowOffset() const { return m_shadowOffset; }
    double shadowRadius() const { return m_shadowOffset.width(); }
    static double shadowOpacity() { return 0.8; }

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
    void fitThumbnail();
    void showImage();
    void offerToHost(const std::shared_ptr<ZVVideoParams> &video);

    QImage m_image;
    QString m_title;
    QString m_duration;
    QString m_category; ///< The service's code.
    QString m_value;
    bool m_isShownByHost = false;
    QPointer<Thumbnails> m_thumbnails;
    std::shared_ptr<ZVVideoParams> m_video; ///< For the thumbnails alone; params() does not return it.
    QPointer<ZVImageView> m_iconImageView;
    QSizeF m_shadowOffset;
};

} // namespace zelvano
