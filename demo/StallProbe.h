#pragma once

#include <QEvent>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>

#include <chrono>
#include <functional>
#include <map>
#include <vector>

namespace demo {

/// Measures how long each event keeps the main thread.
class StallProbe : public QGuiApplication
{
    Q_OBJECT

public:
    using QGuiApplication::QGuiApplication;

    /// Starts the measurement again.
    void reset();
    /// Counts the event in which the web engine starts apart from the others, since that happens only once.
    void watchWebEngine(std::function<bool()> hasStarted) { m_webEngineHasStarted = std::move(hasStarted); }

    /// In milliseconds, the longest event of: the library (its main queue and its own objects), with its CPU time on
    /// this thread; the web engine's start; drawing a window; all others, with the receiver. The others include the
    /// script's work, and the library's inside a signal of the host's player.
    QJsonObject summary() const;
    /// Each event except drawing that took longer than 16 ms, with its start in milliseconds since the reset.
    QJsonArray longerThanAFrame() const;

    bool notify(QObject *receiver, QEvent *event) override;

private:
    using Clock = std::chrono::steady_clock;
    enum class Cause { Library, WebEngineStart, Drawing, Other };
    struct Stall
    {
        Cause cause = Cause::Other;
        QString receiver;
        QEvent::Type event = QEvent::None;
        std::chrono::nanoseconds begin{0}; ///< Since the reset.
        std::chrono::nanoseconds duration{0};
        std::chrono::nanoseconds cpu{0};
    };

    static Cause causeOf(const QObject *receiver, QEvent::Type event);
    void record(const Stall &stall);

    bool m_isMeasuring = false;
    Clock::time_point m_start = Clock::now();
    std::map<Cause, Stall> m_longest;
    std::vector<Stall> m_long;
    std::function<bool()> m_webEngineHasStarted = [] { return true; };
};

} // namespace demo
