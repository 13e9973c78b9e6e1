#include "Logging.h"

namespace zelvano {

const QLoggingCategory &logCategory()
{
    static const auto *const category = new QLoggingCategory("zelvano", QtInfoMsg); // Never destroyed: see Immortal.h.
    return *category;
}

const QLoggingCategory &bodyLogCategory()
{
#ifdef NDEBUG
    constexpr auto least = QtWarningMsg;
#else
    constexpr auto least = QtInfoMsg;
#endif
    static const auto *const category = new QLoggingCategory("zelvano.body", least);
    return *category;
}

} // namespace zelvano
