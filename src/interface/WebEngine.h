#pragma once

namespace zelvano {

/// Whether web views can be made; otherwise the log says what the host has to do. A web view made all the same would
/// end the process.
bool canShowWebPages();

} // namespace zelvano
