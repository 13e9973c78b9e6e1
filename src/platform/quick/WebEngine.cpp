#include "WebEngine.h"

#include "Logging.h"

#include <QCoreApplication>

namespace zelvano {

bool isWebEngineInitialized()
{
    if (QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts)) // Set by QtWebEngineQuick::initialize().
        return true;
    ZV_LOG("Error: QtWebEngineQuick::initialize() must be called before the application object is made, "
           "no web page is shown");
    return false;
}

} // namespace zelvano
