#pragma once

#include <ZelvanoUI/zelvanocore_export.h>

#include <QByteArray>

#include <memory>

struct curl_slist;

namespace zelvano::http {

/// The development routes of the process: a connection for one "host:port" goes to another. Any thread.
class ZELVANOCORE_EXPORT Routes
{
public:
    /// Applies to connections that are made later. URL and Host header stay as they are. An empty target removes the
    /// route.
    static void set(const QByteArray &hostAndPort, const QByteArray &target);

    /// All routes for CURLOPT_CONNECT_TO: a redirect may lead to any of them.
    static std::shared_ptr<curl_slist> connectTo();

    /// Takes the text that hostAndPort() returns.
    static bool isRouted(const QByteArray &hostAndPort);
};

} // namespace zelvano::http
