#pragma once

#include <ZelvanoUI/ZVConfig.h>

namespace zelvano {

/// Clears the configuration, which lives as long as the process, so that each test starts from an empty one.
class ZVConfigTestAccess
{
public:
    static void reset() { ZVConfig::shared().reset(); }
};

} // namespace zelvano
