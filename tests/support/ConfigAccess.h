#pragma once

#include <ZelvanoUI/ZVConfig.h>

namespace zelvano {

/// The configuration lives as long as the process; tests start each from an empty one.
class ZVConfigTestAccess
{
public:
    static void reset()
    {
        auto &config = ZVConfig::shared();
        const QMutexLocker lock(&config.m_mutex);
        config.m_params.reset();
        config.m_keepAliveInterval = 0;
    }
};

} // namespace zelvano
