#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>

#include <memory>

class QQmlEngine;

namespace zelvano {

/// The object tree of a .qml file of the library's bundle. The file's root receives the owner, if any, as "owner";
/// outlets are the objects with an objectName. Main thread.
class ZELVANOUI_EXPORT InterfaceResource
{
public:
    /// For a missing or broken file the root is null, and the log has the reason.
    InterfaceResource(const QString &name, QObject *owner);
    InterfaceResource(const InterfaceResource &) = delete;
    InterfaceResource &operator=(const InterfaceResource &) = delete;
    ~InterfaceResource();

    QQuickItem *root() const { return m_root; }
    /// Null when the tree has no item of this name.
    QQuickItem *outlet(const QString &objectName) const;

private:
    std::shared_ptr<QQmlEngine> m_engine; // Shared by all resources; deleted after the last tree.
    QPointer<QQuickItem> m_root;          // A host may give it a parent object that is deleted first.
};

} // namespace zelvano
