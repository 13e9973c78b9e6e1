#include "LayoutCommand.h"

#include <QUrl>

#include <algorithm>
#include <limits>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// The number at the start of the text, bounded to 32 bits; 0 when there is none.
qint32 leadingInteger(QStringView text)
{
    const bool isNegative = text.startsWith(u'-');
    if (isNegative || text.startsWith(u'+'))
        text = text.sliced(1);
    qint64 number = 0;
    for (const auto character : text) {
        if (character < u'0' || character > u'9')
            break;
        number = std::min<qint64>(number * 10 + (character.unicode() - u'0'), qint64{1} << 32);
    }
    return static_cast<qint32>(std::clamp<qint64>(isNegative ? -number : number, std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

} // namespace

std::optional<LayoutCommand> layoutCommand(const QUrl &address)
{
    LayoutCommand command;
    command.text = address.toString(QUrl::FullyEncoded);
    if (!command.text.startsWith("zelvano://"_L1))
        return std::nullopt;
    // Anywhere in the address, and "ready" before "index", on purpose: layout pages rely on both.
    if (command.text.contains("ready"_L1)) {
        command.kind = LayoutCommand::Kind::Ready;
    } else if (command.text.contains("index"_L1)) {
        command.kind = LayoutCommand::Kind::Index;
        const auto pieces = command.text.split(u'?');
        if (pieces.size() > 1)
            command.position = leadingInteger(pieces[1]);
    }
    return command;
}

} // namespace zelvano
