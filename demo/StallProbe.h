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

/// An application that knows its stalls: how long one event kept the main thread.
class StallProbe : public QGuiApplication
{
    Q_OBJECT

public:
    using QGuiApplication::QGuiApplication;

    /// Forgets what events have cost so far.
    void reset();
    /// An event during which this becomes true is set aside: the web engine starts only once.
    void setExcuse(std::function<bool()> hasStarted) { m_hasStarted = std::move(hasStarted); }

    /// Milliseconds: the longest of the library's events (the main queue's and those of its own objects; what it does
    /// inside a signal of the host's player is the others'), with this thread's CPU in it; the one that was set aside;
    /// the longest drawing of a window; and the longest of all others, the script's own work included, with its
    /// receiver.
    QJsonObject summary() const;
    /// Every event but drawing that took longer than a frame of a screen lasts, and when it began since the reset.
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
