#pragma once

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonObject>

#include <functional>

namespace demo {

/// An application that knows its longest stalls: how long one event kept the main thread.
class StallProbe : public QGuiApplication
{
    Q_OBJECT

public:
    using QGuiApplication::QGuiApplication;

    /// Forgets what events have cost so far.
    void reset();
    /// An event during which this becomes true is set aside: the web engine starts only once.
    void setExcuse(std::function<bool()> hasStarted) { m_hasStarted = std::move(hasStarted); }

    /// Milliseconds, and for the host's the receiver: the longest of the library's events (the
    /// main queue's and those of its own objects; what it does inside a signal of the host's player is the others'),
    /// the one that was set aside, and the longest of all others, painting and the script's own work included.
    QJsonObject summary() const;

    bool notify(QObject *receiver, QEvent *event) override;

private:
    struct Stall
    {
        qint64 nanoseconds = 0;
        QString receiver;
    };

    bool hasStarted() const { return !m_hasStarted || m_hasStarted(); }

    int m_depth = 0;
    Stall m_library;
    Stall m_excused;
    Stall m_others;
    std::function<bool()> m_hasStarted;
};

} // namespace demo
