#pragma once

#include "HttpServer.h"
#include "VideoFolder.h"

namespace zelvano::sandbox {

/// Answers with a page, a video or a picture, or with the part that the request's range names. Videos and their
/// pictures come from the folder; without one they are the samples.
void serveFile(const Request &request, const VideoFolder *folder, HttpAnswer &answer);

} // namespace zelvano::sandbox
