#pragma once

#include <QString>

namespace zelvano {

/// Why an operation failed. A value; nothing in the library throws.
struct Error
{
    /// Where the code comes from: "ZelvanoUrlError" for a transfer, "ZelvanoJsonError" for JSON text, or a host's own.
    QString domain;
    /// Of a transfer: 2 cancelled, 3 timed out, 5 host not found, 6 no connection, 7 connection lost. Others are for
    /// the log.
    int code = 0;
    /// One line for the log, in English.
    QString description;

    friend bool operator==(const Error &, const Error &) = default;
};

} // namespace zelvano
