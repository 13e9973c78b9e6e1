#pragma once

namespace zelvano {

/// Makes the types that the interface resources of the native views are built of known to QML. Again does nothing.
void registerInterfaceTypes();

} // namespace zelvano
