#pragma once

namespace zelvano {

/// Whether web views can be created. If not, the log tells the host what to change. A web view that is created anyway
/// ends the process.
bool canShowWebPages();

} // namespace zelvano
