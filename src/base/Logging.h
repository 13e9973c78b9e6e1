#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QLoggingCategory>

namespace zelvano {

/// The library's log category, "zelvano", with one level, info. QT_LOGGING_RULES="zelvano=false" turns it off. Its
/// lines hold no API key and no user's identity.
ZELVANOCORE_EXPORT const QLoggingCategory &logCategory();

/// The category "zelvano.body" for request bodies, which hold the user's identity. Off in release builds;
/// QT_LOGGING_RULES="zelvano.body=true" turns it on.
ZELVANOCORE_EXPORT const QLoggingCategory &bodyLogCategory();

} // namespace zelvano

/// Logs one line. While the category is off, the arguments are not evaluated.
#define ZV_LOG(...) qCInfo(zelvano::logCategory).noquote().nospace() << __VA_ARGS__
