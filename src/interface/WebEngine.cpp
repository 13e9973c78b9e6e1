#include "WebEngine.h"

#include "Logging.h"
#include "guard/PageGuard.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QPointer>
#include <QTimer>
#include <QVariant>

#include <dlfcn.h>
#include <unistd.h>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds profileDelay{3}; // Chromium starts no download of an ended page after that.

/// Chromium ends a process that runs as root with its sandbox on.
bool isRefusedToRoot()
{
    constexpr auto option = "--no-sandbox"_L1;
    return geteuid() == 0 && qEnvironmentVariableIntValue("QTWEBENGINE_DISABLE_SANDBOX") == 0 &&
           !qEnvironmentVariable("QTWEBENGINE_CHROMIUM_FLAGS").contains(option) &&
           !QCoreApplication::arguments().contains(option);
}

#ifdef ZELVANOUI_STATIC_DEFINE
void guard(QObject *profile)
{
    zelvanoGuardProfile(profile);
}
#else
/// The guard's library, in a folder beside this one.
void guard(QObject *profile)
{
    Dl_info own;
    if (!dladdr(reinterpret_cast<const void *>(&canShowWebPages), &own))
        return;
    QLibrary library(QFileInfo(QFile::decodeName(own.dli_fname)).path() + "/ZelvanoUI/libZelvanoUIGuard"_L1);
    const auto function = library.resolve("zelvanoGuardProfile");
    if (function)
        reinterpret_cast<decltype(&zelvanoGuardProfile)>(function)(profile);
    else
        ZV_LOG("Error: web pages can use compiled-in resources: " << library.errorString());
}
#endif

/// Chromium crashes when a profile ends while a download starts in it.
void keepLonger(QObject *profile, QObject *webView)
{
    // The application deletes its children after the web engine's end, when no download can start.
    static QPointer<QObject> keeper;
    if (!keeper)
        keeper = new QObject(QCoreApplication::instance());
    profile->setParent(keeper);
    QObject::connect(webView, &QObject::destroyed, profile,
                     [profile] { QTimer::singleShot(profileDelay, profile, &QObject::deleteLater); });
}

} // namespace

void protectHost(QObject *webView)
{
    auto *const profile = webView ? webView->property("profile").value<QObject *>() : nullptr;
    if (!profile)
        return;
    guard(profile);
    keepLonger(profile, webView);
}

void logRendererEnd(int status, int exitCode)
{
    ZV_LOG("Error: the renderer process of a web page ended (status " << status << ", exit code " << exitCode
                                                                      << "), the page loads again");
}

bool canShowWebPages()
{
    if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts)) { // Set by QtWebEngineQuick::initialize().
        ZV_LOG(
            "Error: no web page is shown: call QtWebEngineQuick::initialize() before the application object is made");
        return false;
    }
    if (isRefusedToRoot()) {
        ZV_LOG("Error: no web page is shown: Chromium refuses to run as root, run as a user or, for a test, set "
               "QTWEBENGINE_DISABLE_SANDBOX=1");
        return false;
    }
    return true;
}

} // namespace zelvano
