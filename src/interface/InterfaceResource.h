// Internal: not installed.
#pragma once

#include <ZelvanoUI/zelvanoui_export.h>

#include <QObject>
#include <QQuickItem>
#include <QString>

#include <memory>

class QQmlEngine;

namespace zelvano {

/// The object tree of a .qml file of the library's bundle. The file's root gets its owner as the property "owner" and
/// names its outlets by objectName. Main thread.
class ZELVANOUI_EXPORT InterfaceResource
{
public:
    /// Without such a file, or with a broken one, the root is null and the log says why.
    InterfaceResource(const QString &name, QObject *owner);
    InterfaceResource(const InterfaceResource &) = delete;
    InterfaceResource &operator=(const InterfaceResource &) = delete;
    ~InterfaceResource();

    QQuickItem *root() const { return m_root.get(); }
    /// Null when the tree has no object of this name.
    QQuickItem *outlet(const QString &objectName) const;

private:
    std::shared_ptr<QQmlEngine> m_engine; // Shared by all resources that are loaded; ends after the last tree.
    std::unique_ptr<QQuickItem> m_root;
};

} // namespace zelvano
