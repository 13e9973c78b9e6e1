#pragma once

#include <QString>

namespace zelvano {

/// Why an operation failed. A value; nothing in the library throws.
struct Error
{
    /// Where the code comes from: "ZelvanoUrlError" for a transfer, "ZelvanoJsonError" for JSON text, or a host's own.
    QString domain;
    int code = 0;
    /// One line for the log, in English.
    QString description;

    friend bool operator==(const Error &, const Error &) = default;
};

} // namespace zelvano
