#pragma once

#include "HttpServer.h"
#include <ZelvanoUI/Sandbox.h>

#include <optional>
#include <vector>

namespace zelvano::sandbox {

/// The faults to apply. Paths have no slash at the beginning. Not thread-safe.
class Faults
{
public:
    void add(const QString &path, const QString &type, const Fault &fault) { m_entries.push_back({path, type, fault}); }
    void clear() { m_entries.clear(); }
    /// The first that matches the request, if any. Counts how often it has applied.
    std::optional<Fault> take(const QString &path, const QString &type);

private:
    struct Entry
    {
        QString path;
        QString type;
        Fault fault;
    };

    std::vector<Entry> m_entries;
};

/// Spoils the answer. Returns how to send it.
Delivery apply(const Fault &fault, HttpAnswer &answer);

} // namespace zelvano::sandbox
