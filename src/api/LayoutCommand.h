#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QString>

#include <optional>

class QUrl;

namespace zelvano {

/// A command of the layout page to the overlay: a navigation to a "zelvano://" address.
struct LayoutCommand
{
    enum class Kind { Ready, Index, Other };

    Kind kind = Kind::Other;
    std::optional<qint32> position; ///< The video that an Index command chose; absent when the address has none.
    QString text;                   ///< The address, percent-encoded.
};

/// Absent when the address is not a command and loads like any other.
ZELVANOCORE_EXPORT std::optional<LayoutCommand> layoutCommand(const QUrl &address);

} // namespace zelvano
