#include "ZVInterfaceTypes.h"

#include "ZVCollectionView.h"
#include "ZVImageView.h"
#include "ZVTableView.h"

#include <qqml.h>

namespace zelvano {

void registerInterfaceTypes()
{
    static const bool isDone = [] {
        constexpr auto module = "ZelvanoUI.Interface";
        qmlRegisterType<ZVCollectionView>(module, 1, 0, "ZVCollectionView");
        qmlRegisterType<ZVTableView>(module, 1, 0, "ZVTableView");
        qmlRegisterType<ZVImageView>(module, 1, 0, "ZVImageView");
        return true;
    }();
    Q_UNUSED(isDone)
}

} // namespace zelvano
