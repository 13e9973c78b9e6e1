#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

/// Reads values of untrusted JSON. A missing value, or one of a wrong type, reads as absent.
namespace zelvano::json {

/// Null unless the value is a string.
ZELVANOCORE_EXPORT QString stringValue(const QJsonValue &value);
/// The value of a number, a boolean or a string that begins with a number; else 0. Truncated, and clamped to 64 bits.
ZELVANOCORE_EXPORT qint64 integerValue(const QJsonValue &value);
/// The value of a number, a boolean or a string that begins with a number; else 0.
ZELVANOCORE_EXPORT double doubleValue(const QJsonValue &value);
/// True for true, a number other than 0, and a string such as "true", "YES" or "1"; else false.
ZELVANOCORE_EXPORT bool boolValue(const QJsonValue &value);
/// The text of a URL, as it stands. Null unless the value is a string that is a valid URL.
ZELVANOCORE_EXPORT QString urlText(const QJsonValue &value);

/// The value at a path of keys such as "data.userId". Undefined when a key is missing.
ZELVANOCORE_EXPORT QJsonValue valueForKeyPath(const QJsonObject &object, QStringView path);

} // namespace zelvano::json
