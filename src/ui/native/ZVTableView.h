#pragma once

#include "ZVCollectionViewDataSource.h"
#include "ZVItemView.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <qqmlintegration.h>

namespace zelvano {

class ZVTableView;

/// The rows of a table view. Main thread.
class ZELVANOUI_EXPORT ZVTableViewDataSource
{
public:
    virtual ~ZVTableViewDataSource() = default;

    virtual qint64 numberOfRowsInSection(ZVTableView *view, qint64 section) = 0;
    /// A filled cell from the view's dequeueReusableCell(); null leaves the row empty.
    virtual ZVItemViewCell *cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path) = 0;
};

/// Rows of equal height and the view's width; one section. Main thread.
class ZELVANOUI_EXPORT ZVTableView : public zelvano::ZVItemView
{
    Q_OBJECT
    QML_ELEMENT
    /// Points.
    Q_PROPERTY(double rowHeight MEMBER m_rowHeight FINAL)

public:
    ZVTableView();
    ~ZVTableView() override;

    /// Not owned; null for none.
    void setDataSource(ZVTableViewDataSource *source);

protected:
    qint64 countItems() override;
    QSizeF sizeOfItem(qint64 row) override;
    ZVFlowLayout::Metrics metrics() override;
    ZVItemViewCell *cellForItem(qint64 row) override;
    void selectItem(qint64) override {}

private:
    double m_rowHeight = 44;
    ZVTableViewDataSource *m_source = nullptr;
};

} // namespace zelvano
