#include "ClassName.h"

#include <QByteArray>
#include <QMetaObject>
#include <QMetaType>

namespace zelvano {

bool isKindOfClassNamed(const QObject *object, QByteArrayView name)
{
    for (const auto *meta = object ? object->metaObject() : nullptr; meta; meta = meta->superClass()) {
        const QByteArrayView full(meta->className());
        if (full.sliced(full.lastIndexOf(':') + 1) == name)
            return true;
    }
    return false;
}

bool classExists(QByteArrayView name)
{
    return QMetaType::fromName("zelvano::" + name.toByteArray() + '*').isValid();
}

} // namespace zelvano
