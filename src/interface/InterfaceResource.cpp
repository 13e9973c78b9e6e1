#include "InterfaceResource.h"

#include "Logging.h"
#include <ZelvanoUI/Bundle.h>

#include <QQmlComponent>
#include <QQmlEngine>

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

InterfaceResource::InterfaceResource(const QString &name, QObject *owner)
    : m_engine(sharedEngine()), m_root(load(*m_engine, name, owner).release())
{
}

InterfaceResource::~InterfaceResource()
{
    delete m_root;
}

QQuickItem *InterfaceResource::outlet(const QString &objectName) const
{
    return m_root ? m_root->findChild<QQuickItem *>(objectName) : nullptr;
}

} // namespace zelvano
