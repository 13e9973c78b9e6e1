#pragma once

#include <ZelvanoUI/ZVConfig.h>

namespace zelvano {

/// The configuration lives as long as the process; tests start each from an empty one.
class ZVConfigTestAccess
{
public:
    static void reset() { ZVConfig::shared().reset(); }
};

} // namespace zelvano
