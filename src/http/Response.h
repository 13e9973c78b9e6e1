#pragma once

#include <QUrl>

namespace zelvano::http {

/// The head of an answer.
struct Response
{
    int status = 0;
    QUrl url; ///< After redirects.
};

} // namespace zelvano::http
