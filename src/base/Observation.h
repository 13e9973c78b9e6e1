#pragma once

#include <QMetaObject>
#include <QObject>

#include <utility>

namespace zelvano {

/// A signal connection, usually to a property's change signal. The destructor disconnects it.
class Observation
{
public:
    Observation() = default;
    Observation(QMetaObject::Connection connection) : m_connection(std::move(connection)) {}
    Observation(Observation &&other) noexcept : m_connection(std::exchange(other.m_connection, {})) {}
    Observation &operator=(Observation &&other) noexcept
    {
        std::swap(m_connection, other.m_connection);
        return *this;
    }
    ~Observation() { QObject::disconnect(m_connection); }

private:
    QMetaObject::Connection m_connection;
};

} // namespace zelvano
