#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>

/// Aborts unless the condition holds. libFuzzer then keeps the input as a case.
#define FUZZ_REQUIRE(condition)                                                                                        \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                               \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)

/// Silences the library, so that the fuzzer's own lines can be read.
extern "C" [[gnu::used]] inline int LLVMFuzzerInitialize(int *, char ***)
{
    QLoggingCategory::setFilterRules(QStringLiteral("zelvano*=false\nqt.*=false"));
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return 0;
}

inline QByteArray bytesOf(const unsigned char *data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}
