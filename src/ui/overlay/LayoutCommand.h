// Internal: not installed.
#pragma once

#include <QString>

#include <optional>

class QUrl;

namespace zelvano {

/// What the layout page asks of the overlay by navigating to a "zelvano://" address. All that it can ask.
struct LayoutCommand
{
    enum class Kind { Ready, Index, Other };

    Kind kind = Kind::Other;
    /// Which video an Index command chose; without a value it did not say.
    std::optional<qint32> position;
    QString text; ///< As the page wrote it, encoded.
};

/// Nothing when the address is no command, and loads like any other.
std::optional<LayoutCommand> layoutCommand(const QUrl &address);

} // namespace zelvano
