#include "StallProbe.h"

#include <QMetaEnum>
#include <QThread>

#include <time.h>

#include <cmath>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 frame = 16'000'000; // Nanoseconds.

double milliseconds(qint64 nanoseconds)
{
    return std::round(static_cast<double>(nanoseconds) / 1e4) / 100;
}

/// CPU time of the calling thread, in nanoseconds.
qint64 threadCpu()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

QElapsedTimer StallProbe::startedClock()
{
    QElapsedTimer clock;
    clock.start();
    return clock;
}

void StallProbe::reset()
{
    m_longest.clear();
    m_long.clear();
    m_clock.start();
}

QJsonObject StallProbe::summary() const
{
    const auto longest = [this](Whose whose) {
        const auto found = m_longest.find(whose);
        return found == m_longest.end() ? Stall() : found->second;
    };
    return {{"longestStallMs"_L1, milliseconds(longest(Whose::Librarys).nanoseconds)},
            {"longestStallCpuMs"_L1, milliseconds(longest(Whose::Librarys).cpu)},
            {"webEngineStartMs"_L1, milliseconds(longest(Whose::WebEngines).nanoseconds)},
            {"longestDrawingMs"_L1, milliseconds(longest(Whose::Drawing).nanoseconds)},
            {"longestOtherMs"_L1, milliseconds(longest(Whose::Others).nanoseconds)},
            {"longestOther"_L1, longest(Whose::Others).receiver}};
}

QJsonArray StallProbe::longerThanAFrame() const
{
    static const std::map<Whose, QString> names{
        {Whose::Librarys, u"library"_s}, {Whose::WebEngines, u"web engine's start"_s}, {Whose::Others, u"others"_s}};
    QJsonArray list;
    for (const auto &stall : m_long)
        list.append(QJsonObject{{"ms"_L1, milliseconds(stall.nanoseconds)},
                                {"cpuMs"_L1, milliseconds(stall.cpu)},
                                {"beganMs"_L1, milliseconds(stall.begin)},
                                {"whose"_L1, names.at(stall.whose)},
                                {"receiver"_L1, stall.receiver},
                                {"event"_L1, stall.event}});
    return list;
}

StallProbe::Whose StallProbe::whoseIs(const QObject *receiver, QEvent::Type type) const
{
    const bool draws = type == QEvent::Expose || type == QEvent::UpdateRequest || type == QEvent::Timer;
    if (receiver->isWindowType() && draws)
        return Whose::Drawing;
    const bool isLibrarys = receiver->objectName() == "zelvano::MainQueue"_L1 ||
                            qstrncmp(receiver->metaObject()->className(), "zelvano::", 9) == 0;
    return isLibrarys ? Whose::Librarys : Whose::Others;
}

bool StallProbe::notify(QObject *receiver, QEvent *event)
{
    if (m_depth > 0 || QThread::currentThread() != thread())
        return QGuiApplication::notify(receiver, event);
    const bool hadStarted = hasStarted();
    // Read now: the event may delete the receiver.
    const auto *className = receiver->metaObject()->className();
    const auto type = event->type();
    auto whose = whoseIs(receiver, type);
    const auto cpu = threadCpu();
    const auto begin = m_clock.nsecsElapsed();
    ++m_depth;
    const bool result = QGuiApplication::notify(receiver, event);
    --m_depth;
    const auto elapsed = m_clock.nsecsElapsed() - begin;
    if (hadStarted != hasStarted())
        whose = Whose::WebEngines;
    auto &longest = m_longest[whose];
    const bool isLong = elapsed > frame && whose != Whose::Drawing;
    if (elapsed <= longest.nanoseconds && !isLong)
        return result;
    const auto *const typeName = QMetaEnum::fromType<QEvent::Type>().valueToKey(type);
    const Stall stall{elapsed,
                      threadCpu() - cpu,
                      begin,
                      whose,
                      QString::fromLatin1(className),
                      typeName ? QString::fromLatin1(typeName) : QString::number(type)};
    if (elapsed > longest.nanoseconds)
        longest = stall;
    if (isLong)
        m_long.push_back(stall);
    return result;
}

} // namespace demo
