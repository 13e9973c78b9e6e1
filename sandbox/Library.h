#pragma once

#include <QJsonArray>
#include <QString>

namespace zelvano::sandbox {

// The sample videos as the service recommends them. The first is the one that follows the video that plays, which
// itself comes last, so that a request for fewer than there are leaves it out. More than there are start over, under
// identifiers of their own.
QJsonArray recommendedVideos(const QString &baseUrl, const QString &playing, int count);

} // namespace zelvano::sandbox
