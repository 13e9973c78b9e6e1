#include <ZelvanoUI/AVPlayerViewController.h>

namespace zelvano {

AVPlayerViewController::AVPlayerViewController() = default;
AVPlayerViewController::~AVPlayerViewController() = default;

} // namespace zelvano
