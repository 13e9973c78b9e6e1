// Fuzzes what a host or a page puts into a request: the body stays JSON, each header one line, the URL valid.
#include "Fuzzing.h"
#include "Headers.h"
#include "Utilities.h"
#include "ZVAPIObject.h"

#include <QJsonDocument>

#include <fuzzer/FuzzedDataProvider.h>

using namespace zelvano;

namespace {

QByteArray text(FuzzedDataProvider &source)
{
    return QByteArray::fromStdString(source.ConsumeRandomLengthString(64));
}

void buildBody(FuzzedDataProvider &source)
{
    const auto call = ZVAPIObject::create(ZVReadyEventAPI);
    for (const auto set : {&ZVAPIObject::setUserId, &ZVAPIObject::setUserUUID, &ZVAPIObject::setApiType,
                           &ZVAPIObject::setPlayerId, &ZVAPIObject::setPageUUID, &ZVAPIObject::setPageUrl})
        (*call.*set)(QString::fromUtf8(text(source)));
    call->setPosition(source.ConsumeFloatingPoint<float>());
    call->setDuration(source.ConsumeFloatingPoint<float>());
    call->setLatitude(source.ConsumeFloatingPoint<double>());
    call->setSize(source.ConsumeIntegral<qint64>());
    // A QString may hold 16-bit numbers that are not text.
    const auto raw = source.ConsumeRandomLengthString(32);
    const QString broken(reinterpret_cast<const QChar *>(raw.data()), qsizetype(raw.size() / sizeof(QChar)));
    call->addValue(broken, QStringLiteral("raw"));
    call->setVideoId(broken);
    call->addValue(QJsonDocument::fromJson(text(source)).object(), QString::fromUtf8(text(source)));

    const auto written = body(call->params());
    FUZZ_REQUIRE(!written.contains('\n') && !written.contains('\0'));
    QJsonParseError error;
    const auto read = QJsonDocument::fromJson(written, &error);
    FUZZ_REQUIRE(error.error == QJsonParseError::NoError && read.isObject());
    FUZZ_REQUIRE(read.object().size() == call->params().size());
}

void buildHead(FuzzedDataProvider &source)
{
    const auto path = text(source);
    auto request = zelvano::request(QLatin1StringView(path));
    const bool isForeign = source.ConsumeBool();
    const int count = source.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < count; ++i) {
        const auto name = text(source);
        request.setHeader(name, text(source));
        request.headers.emplace_back(name, text(source)); // A host's own request may bypass the setter.
    }
    const auto list = http::headerList(request, isForeign);
    for (const auto *line = list.get(); line; line = line->next) {
        const QByteArray header(line->data);
        FUZZ_REQUIRE(header.contains(':') || header.endsWith(';'));
        FUZZ_REQUIRE(!isForeign || !header.toLower().startsWith("x-"));
        for (const char c : header)
            FUZZ_REQUIRE(uchar(c) >= 0x20 && c != 0x7f);
    }
}

void checkUrl(FuzzedDataProvider &source)
{
    http::Request request;
    request.url = QUrl::fromEncoded(text(source));
    request.method = text(source);
    if (request.problem())
        return;
    for (const char c : request.method + request.url.toEncoded())
        FUZZ_REQUIRE(uchar(c) > 0x20 && uchar(c) < 0x7f);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *bytes, std::size_t size)
{
    FuzzedDataProvider source(bytes, size);
    checkUrl(source);
    buildHead(source);
    buildBody(source);
    return 0;
}
