#pragma once

#include <QElapsedTimer>
#include <QEvent>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>

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
    /// Counts the event during which this becomes true apart from the others: the web engine starts only once.
    void setExcuse(std::function<bool()> hasStarted) { m_hasStarted = std::move(hasStarted); }

    /// In milliseconds, the longest event of: the library (its main queue and its own objects), with its CPU time on
    /// this thread; the web engine's start; drawing a window; all others, with the receiver. The others include the
    /// script's work, and the library's inside a signal of the host's player.
    QJsonObject summary() const;
    /// Each event except drawing that took longer than 16 ms, with its start in milliseconds since the reset.
    QJsonArray longerThanAFrame() const;

    bool notify(QObject *receiver, QEvent *event) override;

private:
    enum class Whose { Librarys, WebEngines, Drawing, Others };
    struct Stall
    {
        qint64 nanoseconds = 0;
        qint64 cpu = 0;
        qint64 begin = 0;
        Whose whose = Whose::Others;
        QString receiver;
        QString event;
    };

    static QElapsedTimer startedClock();
    Whose whoseIs(const QObject *receiver, QEvent::Type type) const;
    bool hasStarted() const { return !m_hasStarted || m_hasStarted(); }

    int m_depth = 0;
    QElapsedTimer m_clock = startedClock();
    std::map<Whose, Stall> m_longest;
    std::vector<Stall> m_long;
    std::function<bool()> m_hasStarted;
};

} // namespace demo
