#include "StallProbe.h"

#include <QMetaEnum>
#include <QThread>

#include <time.h>

#include <cmath>

namespace demo {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds frame(16);

double milliseconds(std::chrono::nanoseconds time)
{
    return std::round(static_cast<double>(time.count()) / 1e4) / 100;
}

/// CPU time of the calling thread.
std::chrono::nanoseconds threadCpu()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

QString nameOf(QEvent::Type event)
{
    const auto *const name = QMetaEnum::fromType<QEvent::Type>().valueToKey(event);
    return name ? QString::fromLatin1(name) : QString::number(event);
}

} // namespace

void StallProbe::reset()
{
    m_longest.clear();
    m_long.clear();
    m_start = Clock::now();
}

QJsonObject StallProbe::summary() const
{
    const auto longest = [this](Cause cause) {
        const auto found = m_longest.find(cause);
        return found == m_longest.end() ? Stall() : found->second;
    };
    return {{"longestStallMs"_L1, milliseconds(longest(Cause::Library).duration)},
            {"longestStallCpuMs"_L1, milliseconds(longest(Cause::Library).cpu)},
            {"webEngineStartMs"_L1, milliseconds(longest(Cause::WebEngineStart).duration)},
            {"longestDrawingMs"_L1, milliseconds(longest(Cause::Drawing).duration)},
            {"longestOtherMs"_L1, milliseconds(longest(Cause::Other).duration)},
            {"longestOther"_L1, longest(Cause::Other).receiver}};
}

QJsonArray StallProbe::longerThanAFrame() const
{
    static const std::map<Cause, QString> causes{{Cause::Library, u"library"_s},
                                                 {Cause::WebEngineStart, u"start of the web engine"_s},
                                                 {Cause::Other, u"other"_s}};
    QJsonArray list;
    for (const auto &stall : m_long)
        list.append(QJsonObject{{"ms"_L1, milliseconds(stall.duration)},
                                {"cpuMs"_L1, milliseconds(stall.cpu)},
                                {"beganMs"_L1, milliseconds(stall.begin)},
                                {"cause"_L1, causes.at(stall.cause)},
                                {"receiver"_L1, stall.receiver},
                                {"event"_L1, nameOf(stall.event)}});
    return list;
}

StallProbe::Cause StallProbe::causeOf(const QObject *receiver, QEvent::Type event)
{
    const bool draws = event == QEvent::Expose || event == QEvent::UpdateRequest || event == QEvent::Timer;
    if (receiver->isWindowType() && draws)
        return Cause::Drawing;
    const bool isOfLibrary = receiver->objectName() == "zelvano::MainQueue"_L1 ||
                             qstrncmp(receiver->metaObject()->className(), "zelvano::", 9) == 0;
    return isOfLibrary ? Cause::Library : Cause::Other;
}

bool StallProbe::notify(QObject *receiver, QEvent *event)
{
    if (QThread::currentThread() != thread() || m_isMeasuring)
        return QGuiApplication::notify(receiver, event);
    const auto type = event->type();
    // Read now: the event may delete the receiver.
    Stall stall{causeOf(receiver, type), QString::fromLatin1(receiver->metaObject()->className()), type};
    const bool hadStarted = m_webEngineHasStarted();
    const auto cpu = threadCpu();
    const auto begin = Clock::now();
    m_isMeasuring = true;
    const bool result = QGuiApplication::notify(receiver, event);
    m_isMeasuring = false;
    stall.begin = begin - m_start;
    stall.duration = Clock::now() - begin;
    stall.cpu = threadCpu() - cpu;
    if (hadStarted != m_webEngineHasStarted())
        stall.cause = Cause::WebEngineStart;
    record(stall);
    return result;
}

void StallProbe::record(const Stall &stall)
{
    auto &longest = m_longest[stall.cause];
    if (stall.duration > longest.duration)
        longest = stall;
    if (stall.duration > frame && stall.cause != Cause::Drawing)
        m_long.push_back(stall);
}

} // namespace demo

#include "moc_StallProbe.cpp"
