#pragma once

#include "ZVCollectionViewDataSource.h"
#include "ZVItemView.h"
#include "ZVItemViewCell.h"
#include <ZelvanoUI/zelvanoui_export.h>

#include <qqmlintegration.h>

namespace zelvano {

class ZVTableView;

/// The rows of a table view. Main thread.
class ZVTableViewDataSource
{
public:
    virtual ~ZVTableViewDataSource() = default;

    virtual qint64 numberOfRowsInSection(ZVTableView *view, qint64 section) = 0;
    /// Fills the reused cell.
    virtual void cellForRowAtIndexPath(ZVTableView *view, const IndexPath &path, ZVItemViewCell *cell) = 0;
};

/// Rows over the whole width, one below the other; the viewer chooses within a row. Main thread.
class ZELVANOUI_EXPORT ZVTableView : public zelvano::ZVItemView
{
    Q_OBJECT
    QML_ELEMENT

public:
    ZVTableView() = default;

    /// Not owned; null for none.
    void setDataSource(ZVTableViewDataSource *source)
    {
        m_source = source;
        reloadData();
    }

protected:
    qint64 countItems() override { return m_source ? m_source->numberOfRowsInSection(this, 0) : 0; }
    void fillCell(ZVItemViewCell *cell) override
    {
        if (m_source)
            m_source->cellForRowAtIndexPath(this, {cell->row()}, cell);
    }
    void selectItem(qint64) override {}

private:
    ZVTableViewDataSource *m_source = nullptr;
};

} // namespace zelvano
