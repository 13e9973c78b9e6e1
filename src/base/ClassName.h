// Internal: not installed.
#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArrayView>
#include <QObject>

namespace zelvano {

/// True when the object's class, or one that it derives from, has this name, whatever its namespace. False for null.
ZELVANOCORE_EXPORT bool isKindOfClassNamed(const QObject *object, QByteArrayView name);

/// True when the library's class of this name is part of the process: when it is registered as a type.
ZELVANOCORE_EXPORT bool classExists(QByteArrayView name);

} // namespace zelvano
