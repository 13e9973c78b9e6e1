// Fuzzes the bytes of a thumbnail.
#include "Fuzzing.h"
#include "ImageDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *bytes, std::size_t size)
{
    const auto image = zelvano::decodedImage(bytesOf(bytes, size));
    FUZZ_REQUIRE(image.isNull() || qint64(image.width()) * image.height() <= qint64{16} * 1024 * 1024);
    return 0;
}
