// Fuzzes the addresses that the layout page navigates to.
#include "Fuzzing.h"
#include "LayoutCommand.h"

#include <QUrl>

using namespace zelvano;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *bytes, std::size_t size)
{
    const auto address = QUrl(QString::fromUtf8(bytesOf(bytes, size)));
    const auto command = layoutCommand(address);
    if (!command)
        return 0;
    FUZZ_REQUIRE(address.scheme() == QLatin1StringView("zelvano")); // Other addresses load as usual.
    const bool isIndex = command->kind == LayoutCommand::Kind::Index;
    FUZZ_REQUIRE(!command->position || isIndex);
    FUZZ_REQUIRE(!isIndex || command->position.has_value() == command->text.contains(QLatin1Char('?')));
    for (const auto character : command->text)
        FUZZ_REQUIRE(character > u' ' && character < u'\x7f'); // The log line stays one line.
    return 0;
}
