#pragma once

#include "ZVCollectionViewDataSource.h"
#include "ZVItemView.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <QMarginsF>
#include <QSizeF>
#include <qqmlintegration.h>

namespace zelvano {

/// Items of different sizes in lines; one section. Main thread.
class ZELVANOUI_EXPORT ZVCollectionView : public zelvano::ZVItemView
{
    Q_OBJECT
    QML_ELEMENT
    /// The direction of scrolling.
    Q_PROPERTY(Qt::Orientation direction MEMBER m_direction FINAL)
    /// Defaults of the data source, in points.
    Q_PROPERTY(QSizeF itemSize MEMBER m_itemSize FINAL)
    Q_PROPERTY(double spacing MEMBER m_spacing FINAL)
    Q_PROPERTY(double inset MEMBER m_inset FINAL)

public:
    ZVCollectionView();
    ~ZVCollectionView() override;

    /// Not owned; null for none.
    void setDataSource(ZVCollectionViewDataSource *source);

    QSizeF itemSize() const { return m_itemSize; }
    double spacing() const { return m_spacing; }
    QMarginsF inset() const { return {m_inset, m_inset, m_inset, m_inset}; }

protected:
    qint64 countItems() override;
    QSizeF sizeOfItem(qint64 row) override;
    ZVFlowLayout::Metrics metrics() override;
    ZVItemViewCell *cellForItem(qint64 row) override;
    void selectItem(qint64 row) override;

private:
    Qt::Orientation m_direction = Qt::Vertical;
    QSizeF m_itemSize{100, 100};
    double m_spacing = 0;
    double m_inset = 0;
    ZVCollectionViewDataSource *m_source = nullptr;
};

} // namespace zelvano
