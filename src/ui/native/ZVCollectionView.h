#pragma once

#include "ZVCollectionViewDataSource.h"
#include "ZVItemView.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <qqmlintegration.h>

namespace zelvano {

/// Items of one section in lines. Main thread.
class ZELVANOUI_EXPORT ZVCollectionView : public zelvano::ZVItemView
{
    Q_OBJECT
    QML_ELEMENT
    // The data source's, in points and in whole pixels: other positions look blurred.
    Q_PROPERTY(double lineSpacing MEMBER m_lineSpacing NOTIFY metricsChanged FINAL)
    Q_PROPERTY(double itemSpacing MEMBER m_itemSpacing NOTIFY metricsChanged FINAL)
    Q_PROPERTY(double inset MEMBER m_inset NOTIFY metricsChanged FINAL)

public:
    ZVCollectionView();
    ~ZVCollectionView() override;

    /// Not owned; null for none.
    void setDataSource(ZVCollectionViewDataSource *source);
    Q_SIGNAL void metricsChanged();
    /// The size of a cell, in points. A cell that is created with it is laid out once.
    Q_INVOKABLE QSizeF sizeOf(qint64 row);

protected:
    qint64 countItems() override;
    void fillCell(ZVItemViewCell *cell) override;
    void selectItem(qint64 row) override;
    void updateMetrics() override;

private:
    double snapped(double points) const;

    ZVCollectionViewDataSource *m_source = nullptr;
    double m_lineSpacing = 0;
    double m_itemSpacing = 0;
    double m_inset = 0;
};

} // namespace zelvano
