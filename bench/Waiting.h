#pragma once

#include "ZVAPIObject.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>

namespace zelvano::bench {

/// Runs the event loop until the predicate holds. Ends the program if it never does.
template<class Predicate> void wait(const char *what, Predicate predicate)
{
    const QDeadlineTimer deadline(std::chrono::seconds(20));
    while (!predicate()) {
        if (deadline.hasExpired())
            qFatal("waited too long for %s", what);
        QThread::usleep(100);
        QCoreApplication::processEvents();
    }
}

inline bool allCallsEnded()
{
    const auto tasks = ZVAPIObject::tasks();
    return std::all_of(tasks.begin(), tasks.end(), [](const auto &task) { return task->isFinished(); });
}

} // namespace zelvano::bench
