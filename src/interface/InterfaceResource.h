#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QString>

class QObject;
class QQuickItem;

namespace zelvano {

/// The object tree of a .qml file of the library's bundle. The file's root receives the owner, if any, as "owner";
/// outlets are the objects with an objectName. The tree leaves the screen with the resource, and is deleted when no
/// handler of its objects runs. Main thread.
class ZELVANOUI_EXPORT InterfaceResource
{
public:
    /// For a missing or broken file the root is null, and the log has the reason.
    InterfaceResource(const QString &name, QObject *owner);
    InterfaceResource(const InterfaceResource &) = delete;
    InterfaceResource &operator=(const InterfaceResource &) = delete;
    ~InterfaceResource();

    QQuickItem *root() const;
    /// Null when the tree has no item of this name.
    QQuickItem *outlet(const QString &objectName) const;

private:
    class Tree;
    Tree *const m_tree;
};

/// Deletes the object: as soon as the event loop returns from the handlers that run now, or at once without an event
/// loop, which would never delete it.
ZELVANOUI_EXPORT void deleteAfterHandlers(QObject *object);

} // namespace zelvano
