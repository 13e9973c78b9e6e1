#include "StallProbe.h"

#include <QThread>

#include <cmath>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

double milliseconds(qint64 nanoseconds)
{
    return std::round(static_cast<double>(nanoseconds) / 1e4) / 100;
}

} // namespace

void StallProbe::reset()
{
    m_library = m_excused = m_others = {};
}

QJsonObject StallProbe::summary() const
{
    return {{"longestStallMs"_L1, milliseconds(m_library.nanoseconds)},
            {"webEngineStartMs"_L1, milliseconds(m_excused.nanoseconds)},
            {"longestOtherMs"_L1, milliseconds(m_others.nanoseconds)},
            {"longestOther"_L1, m_others.receiver}};
}

bool StallProbe::notify(QObject *receiver, QEvent *event)
{
    if (m_depth > 0 || QThread::currentThread() != thread())
        return QGuiApplication::notify(receiver, event);
    const bool hadStarted = hasStarted();
    const auto name = receiver->objectName(); // The receiver may be gone afterwards.
    const auto *className = receiver->metaObject()->className();
    const bool isLibrarys = name == "zelvano::MainQueue"_L1 || qstrncmp(className, "zelvano::", 9) == 0;
    QElapsedTimer clock;
    clock.start();
    ++m_depth;
    const bool result = QGuiApplication::notify(receiver, event);
    --m_depth;
    const auto elapsed = clock.nsecsElapsed();
    auto &stall = hadStarted != hasStarted() ? m_excused : isLibrarys ? m_library : m_others;
    if (elapsed > stall.nanoseconds)
        stall = {elapsed, QString::fromLatin1(className)};
    return result;
}

} // namespace demo
