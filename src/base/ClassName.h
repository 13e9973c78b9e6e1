#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArrayView>
#include <QObject>

namespace zelvano {

/// True when the object's class or a base class has this name. Ignores namespaces. False for null.
ZELVANOCORE_EXPORT bool isKindOfClassNamed(const QObject *object, QByteArrayView name);

/// True when the library's class of this name is registered with the meta-type system.
ZELVANOCORE_EXPORT bool classExists(QByteArrayView name);

} // namespace zelvano
