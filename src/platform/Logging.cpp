#include "Logging.h"

namespace zelvano {

const QLoggingCategory &logCategory()
{
    static const QLoggingCategory category("zelvano", QtInfoMsg);
    return category;
}

} // namespace zelvano
