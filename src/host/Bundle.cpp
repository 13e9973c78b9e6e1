#include <ZelvanoUI/Bundle.h>

#include "Immortal.h"
#include "JsonReading.h"
#include "Logging.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QMutex>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

struct LoadedBundles
{
    QMutex mutex;
    QHash<QString, Bundle> byIdentifier;
};

} // namespace

struct Bundle::Private
{
    QString path;
    QJsonObject info;
};

Bundle::Bundle(std::shared_ptr<const Private> data) : d(std::move(data)) {}

std::optional<Bundle> Bundle::atPath(const QString &path)
{
    QFile info(path + "/Info.json"_L1);
    if (!info.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto document = QJsonDocument::fromJson(info.readAll());
    if (!document.isObject()) {
        ZV_LOG("Error reading bundle: " << info.fileName() << " is no JSON object");
        return std::nullopt;
    }
    return Bundle(std::make_shared<Private>(Private{path, document.object()}));
}

void Bundle::load(const Bundle &bundle)
{
    auto &bundles = immortal<LoadedBundles>();
    const QMutexLocker lock(&bundles.mutex);
    bundles.byIdentifier.insert(bundle.infoValue(u"CFBundleIdentifier"_s), bundle);
}

std::optional<Bundle> Bundle::withIdentifier(const QString &identifier)
{
    auto &bundles = immortal<LoadedBundles>();
    const QMutexLocker lock(&bundles.mutex);
    const auto found = bundles.byIdentifier.constFind(identifier);
    return found == bundles.byIdentifier.cend() ? std::nullopt : std::optional(*found);
}

std::optional<Bundle> Bundle::inMainBundle(const QString &resource, const QString &extension)
{
    const auto name = u'/' + resource + u'.' + extension;
    if (QCoreApplication::instance()) {
        if (auto beside = atPath(QCoreApplication::applicationDirPath() + name))
            return beside;
    }
    return atPath(u':' + name);
}

QString Bundle::mainBundleName()
{
    return QCoreApplication::applicationName();
}

QString Bundle::infoValue(const QString &key) const
{
    return json::stringValue(d->info.value(key));
}

QUrl Bundle::resource(const QString &name, const QString &extension) const
{
    const auto file = d->path + u'/' + name + u'.' + extension;
    if (!QFile::exists(file))
        return {};
    return file.startsWith(u':') ? QUrl("qrc"_L1 + file) : QUrl::fromLocalFile(file);
}

namespace {

std::optional<Bundle> findBundle()
{
    return Bundle::inMainBundle(u"ZelvanoUIResources"_s, u"bundle"_s);
}

/// The library's bundle in the main bundle. Searched for once: each request needs it.
struct MainBundles
{
    std::optional<Bundle> zelvano = findBundle();

    MainBundles()
    {
        if (!zelvano)
            ZV_LOG(
                "Error: resource bundle ZelvanoUIResources.bundle not found: link the library with its resources, or "
                "put the folder beside the executable");
    }
};

} // namespace

std::optional<Bundle> zelvanoBundle()
{
    if (auto loaded = Bundle::withIdentifier(u"ZelvanoUI"_s))
        return loaded;
    // Without the application object the executable's folder is not known yet.
    return QCoreApplication::instance() ? immortal<MainBundles>().zelvano : findBundle();
}

} // namespace zelvano
