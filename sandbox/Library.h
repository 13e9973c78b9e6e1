#pragma once

#include <QJsonArray>
#include <QString>

namespace zelvano::sandbox {

// The sample videos as the service recommends them, from the one after the current video to the current one itself. A
// larger count starts over, with different identifiers.
QJsonArray recommendedVideos(const QString &baseUrl, const QString &playing, int count);

} // namespace zelvano::sandbox
