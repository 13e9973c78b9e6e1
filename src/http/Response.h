#pragma once

#include <QByteArray>

namespace zelvano::http {

/// An answer. Empty if the transfer failed.
struct Response
{
    int status = 0;
    QByteArray data;
};

} // namespace zelvano::http
