#include "WebEngine.h"

#include "Logging.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickItem>
#include <QTimer>

#include <unistd.h>

namespace zelvano {

using namespace Qt::StringLiterals;

namespace {

/// Chromium ends a process of root's, unless its sandbox is off.
bool isRefusedToRoot()
{
    constexpr auto option = "--no-sandbox"_L1;
    return geteuid() == 0 && qEnvironmentVariableIntValue("QTWEBENGINE_DISABLE_SANDBOX") == 0 &&
           !qEnvironmentVariable("QTWEBENGINE_CHROMIUM_FLAGS").contains(option) &&
           !QCoreApplication::arguments().contains(option);
}

/// The parent of profiles whose view is gone. It ends before Chromium does: what registers last is called first.
QObject *profilesLeftBehind()
{
    static QPointer<QObject> only;
    if (!only) {
        only = new QObject;
        qAddPostRoutine([] { delete only.data(); });
    }
    return only;
}

} // namespace

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

void keepProfileBehind(QQuickItem *webView)
{
    auto *const profile = webView->property("profile").value<QObject *>();
    if (!profile)
        return;
    QObject::connect(webView, &QObject::destroyed, profile, [profile] {
        profile->setParent(profilesLeftBehind()); // Just in time: the view deletes its children next.
        QTimer::singleShot(std::chrono::seconds(5), profile, &QObject::deleteLater);
    });
}

} // namespace zelvano
