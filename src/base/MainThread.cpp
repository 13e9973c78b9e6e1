#include <ZelvanoUI/MainThread.h>

#include "MainQueue.h"

namespace zelvano {

void destroyOnMainThread(void *object, void (*destroy)(void *))
{
    if (MainQueue::isMainThread())
        destroy(object);
    else
        MainQueue::shared().post([object, destroy] { destroy(object); });
}

} // namespace zelvano
