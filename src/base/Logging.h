// Internal: not installed.
#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QLoggingCategory>

namespace zelvano {

/// The library's log category, "zelvano". It has one level, info: hosts silence or show it with
/// QT_LOGGING_RULES="zelvano=false". No line of it holds an API key or a user's identity.
ZELVANOCORE_EXPORT const QLoggingCategory &logCategory();

/// The bodies of requests as they are sent, the user's identity with them: "zelvano.body". Off in release builds unless
/// a host asks for it with QT_LOGGING_RULES="zelvano.body=true".
ZELVANOCORE_EXPORT const QLoggingCategory &bodyLogCategory();

} // namespace zelvano

/// One line into the library's log; its arguments are not evaluated while the category is off.
#define ZV_LOG(...) qCInfo(zelvano::logCategory).noquote().nospace() << __VA_ARGS__
