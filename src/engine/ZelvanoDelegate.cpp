#include <ZelvanoUI/ZelvanoDelegate.h>

namespace zelvano {

// Out of line, so that host and library share one type description: casts between them rely on it.
ZelvanoDelegate::~ZelvanoDelegate() = default;
ZelvanoPrivateDelegate::~ZelvanoPrivateDelegate() = default;

} // namespace zelvano
