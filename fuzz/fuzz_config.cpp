// Fuzzes the configuration from the service and the requests that are built from it.
#include "ConfigAccess.h"
#include "Fuzzing.h"
#include "Utilities.h"
#include <ZelvanoUI/Zelvano.h>

#include <QJsonDocument>

#include <cmath>

using namespace zelvano;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *bytes, std::size_t size)
{
    ZVConfigTestAccess::reset();
    auto &config = ZVConfig::shared();
    config.setParams(QJsonDocument::fromJson(bytesOf(bytes, size)).object());
    config.shouldShowRecommendation();
    const auto page = config.UITagUrl();
    FUZZ_REQUIRE(page.isValid() || page.toString().isEmpty());
    const double interval = config.keepAliveInterval();
    FUZZ_REQUIRE(!std::isnan(interval));
    FUZZ_REQUIRE(config.keepAliveInterval() == interval);

    for (const auto path : {ZVRetrieveUserIdAPI, ZVReadyEventAPI}) {
        const auto request = zelvano::request(path);
        FUZZ_REQUIRE(request.headers.size() == 2);
        const auto encoded = request.url.toEncoded();
        for (const char c : encoded)
            FUZZ_REQUIRE(uchar(c) > 0x20 && uchar(c) < 0x7f);
        FUZZ_REQUIRE(request.url.isValid() || encoded.isEmpty());
    }
    return 0;
}
