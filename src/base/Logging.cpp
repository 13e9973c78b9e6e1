#include "Logging.h"

namespace zelvano {

const QLoggingCategory &logCategory()
{
    static const QLoggingCategory category("zelvano", QtInfoMsg);
    return category;
}

const QLoggingCategory &bodyLogCategory()
{
#ifdef NDEBUG
    constexpr auto least = QtWarningMsg;
#else
    constexpr auto least = QtInfoMsg;
#endif
    static const QLoggingCategory category("zelvano.body", least);
    return category;
}

} // namespace zelvano
