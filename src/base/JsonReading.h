// Internal: not installed.
#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QUrl>

/// Reads values out of answers that nobody vouches for: what is missing or of a wrong type reads as absent.
namespace zelvano::json {

/// Null unless the value is a string.
ZELVANOCORE_EXPORT QString stringValue(const QJsonValue &value);
/// Of a number, a boolean or a text that begins with a number; 0 otherwise. Cut towards zero, bounded to 64 bits.
ZELVANOCORE_EXPORT qint64 integerValue(const QJsonValue &value);
/// Of a number, a boolean or a text that begins with a number; 0 otherwise.
ZELVANOCORE_EXPORT double doubleValue(const QJsonValue &value);
/// Of a boolean, a number other than 0, or a text such as "true", "YES" or "1"; false otherwise.
ZELVANOCORE_EXPORT bool boolValue(const QJsonValue &value);
/// Invalid unless the value is a text that is a URL as it stands.
ZELVANOCORE_EXPORT QUrl urlValue(const QJsonValue &value);

/// What stands at a path of keys joined by dots, such as "data.userId"; undefined when a step is missing.
ZELVANOCORE_EXPORT QJsonValue valueForKeyPath(const QJsonObject &object, QStringView path);

} // namespace zelvano::json
