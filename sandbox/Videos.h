#pragma once

#include <QJsonArray>
#include <QString>

#include <vector>

namespace zelvano::sandbox {

struct Video
{
    int number = 0; ///< Names its files: "/media/3.mp4".
    QString suffix; ///< Of its media file.
    QString title;
    QString customerId;
    QString category;
    int seconds = 0;
    int value = 0;
    qint64 published = 0; ///< Seconds since 1970.
    bool hasStrip = false;
};

const std::vector<Video> &sampleVideos();

/// The videos as the service recommends them, from the one after the current video to the current one itself. A larger
/// count starts over, with different identifiers.
QJsonArray recommendedVideos(const std::vector<Video> &videos, const QString &baseUrl, const QString &playing,
                             int count);

} // namespace zelvano::sandbox
