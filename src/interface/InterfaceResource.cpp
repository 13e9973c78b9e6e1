#include "InterfaceResource.h"

#include "Logging.h"
#include <ZelvanoUI/Bundle.h>

#include <QCoreApplication>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QThread>

#include <memory>
#include <tuple>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<QQmlEngine> sharedEngine()
{
    static std::weak_ptr<QQmlEngine> last;
    auto engine = last.lock();
    if (!engine) {
        engine = std::make_shared<QQmlEngine>();
        last = engine;
    }
    return engine;
}

std::unique_ptr<QQuickItem> load(QQmlEngine &engine, const QString &name, QObject *owner)
{
    const auto bundle = zelvanoBundle();
    const auto url = bundle ? bundle->resource(name, u"qml"_s) : QUrl();
    if (url.isEmpty()) {
        ZV_LOG("Error: interface resource " << name << " not found");
        return nullptr;
    }
    QQmlComponent component(&engine, url);
    std::unique_ptr<QObject> object;
    const auto properties = owner ? QVariantMap{{u"owner"_s, QVariant::fromValue(owner)}} : QVariantMap();
    if (component.isReady()) // Qt crashes when it creates from a broken file.
        object.reset(component.createWithInitialProperties(properties));
    if (auto *item = qobject_cast<QQuickItem *>(object.get())) {
        std::ignore = object.release(); // Now owned as a QQuickItem.
        QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
        return std::unique_ptr<QQuickItem>(item);
    }
    ZV_LOG("Error: interface resource " << name << " cannot be loaded: " << component.errorString().simplified());
    return nullptr;
}

} // namespace

class InterfaceResource::Tree : public QObject
{
public:
    Tree(const QString &name, QObject *owner) : root(load(*engine, name, owner).release()) {}
    ~Tree() override { delete root; }

    const std::shared_ptr<QQmlEngine> engine = sharedEngine(); // Deleted after the last tree.
    const QPointer<QQuickItem> root; // A host may give it a parent object that is deleted first.
};

InterfaceResource::InterfaceResource(const QString &name, QObject *owner) : m_tree(new Tree(name, owner)) {}

InterfaceResource::~InterfaceResource()
{
    if (auto *const root = m_tree->root.data()) {
        root->setProperty("owner", QVariant::fromValue<QObject *>(nullptr));
        root->setParentItem(nullptr);
        QCoreApplication::removePostedEvents(root, QEvent::MetaCall); // As if it were deleted now.
    }
    deleteAfterHandlers(m_tree);
}

QQuickItem *InterfaceResource::root() const
{
    return m_tree->root;
}

QQuickItem *InterfaceResource::outlet(const QString &objectName) const
{
    return root() ? root()->findChild<QQuickItem *>(objectName) : nullptr;
}

void deleteAfterHandlers(QObject *object)
{
    if (QThread::currentThread()->loopLevel() > 0)
        object->deleteLater();
    else
        delete object;
}

} // namespace zelvano
