#pragma once

#include "HttpLoad.h"
#include "TestAuthority.h"
#include <ZelvanoUI/Sandbox.h>

#include <QFile>

#include <sys/un.h>

/// nginx before a sandbox, https over TLS 1.3. A relay on a loopback port stands before its socket and counts what
/// passes. Another port redirects http to https.
class Front
{
public:
    /// What a connection carried. In a round trip the client sends, and the answer begins.
    struct Carried
    {
        int roundTrips = 0;
        qint64 up = 0, down = 0; ///< Bytes.

        Carried operator-(const Carried &other) const
        {
            return {roundTrips - other.roundTrips, up - other.up, down - other.down};
        }
    };

    Front(const zelvano::sandbox::Sandbox &service, const TestAuthority &authority, int requestsPerConnection = 1000)
        : m_authority(authority), m_secure([this](auto &client) { relay(client); }), m_plain([](auto &client) {
            for (QByteArray request; !(request = client.readRequest()).isEmpty();)
                client.write(httpRedirect("308", "https://" + QUrl(zelvano::API_URL_PROD).host().toLatin1() +
                                                     request.split(' ').at(1)));
        })
    {
        configure(service.url().authority(), requestsPerConnection);
    }
    ~Front()
    {
        m_nginx.terminate();
        m_nginx.waitForFinished(10000);
        QFile::remove(logFile());
    }
    Q_DISABLE_COPY_MOVE(Front)

    bool start()
    {
        m_nginx.setWorkingDirectory(m_authority.folder());
        m_nginx.start(QStringLiteral("/usr/sbin/nginx"), arguments());
        return waitUntil([this] { return close(connectToNginx()) == 0; });
    }
    /// New workers take new connections. The old ones close theirs as soon as they are idle, except one that the
    /// browser keeps in reserve.
    void reload()
    {
        const auto before = workers();
        QProcess::execute(QStringLiteral("/usr/sbin/nginx"), arguments()
                                                                 << QStringLiteral("-s") << QStringLiteral("reload"));
        waitUntil([&] { return !workers().contains(before.constFirst()) && m_open == 0; }, std::chrono::seconds(2));
    }

    /// "host:port" of http, for useService().
    QByteArray plain() const { return m_plain.hostAndPort(); }
    /// The same of https.
    QByteArray secure() const { return m_secure.hostAndPort(); }
    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("https://localhost:%1/%2").arg(m_secure.url().port()).arg(path));
    }

    /// The https connections, oldest first.
    std::vector<Carried> connections() const
    {
        const std::lock_guard lock(m_mutex);
        return m_connections;
    }
    /// The https requests in nginx's own words: "HTTP/2.0 POST /events 200".
    QStringList requests() const
    {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly)
                   ? QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)
                   : QStringList();
    }

private:
    QString logFile() const { return m_authority.folder() + QStringLiteral("/access.log"); }

    void configure(const QString &service, int requestsPerConnection) const
    {
        QFile file(m_authority.folder() + QStringLiteral("/nginx.conf"));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no configuration for nginx");
        file.write(QStringLiteral(R"(
daemon off;
pid nginx.pid;
error_log error.log;
worker_processes 1;
events {}
http {
    log_format request '$server_protocol $request_method $uri $status';
    access_log off;
    client_body_temp_path temp;
    proxy_temp_path temp;
    fastcgi_temp_path temp;
    uwsgi_temp_path temp;
    scgi_temp_path temp;
    upstream service { server %1; keepalive 4; }
    server {
        listen unix:tls.sock ssl http2;
        ssl_protocols TLSv1.3;
        ssl_certificate cert.pem;
        ssl_certificate_key key.pem;
        keepalive_requests %2;
        access_log access.log request;
        location / {
            proxy_pass http://service;
            proxy_http_version 1.1;
            proxy_set_header Connection "";
            proxy_set_header X-Forwarded-Proto https;
            proxy_set_header X-Forwarded-Host localhost:%3;
        }
    }
}
)")
                       .arg(service)
                       .arg(requestsPerConnection)
                       .arg(m_secure.url().port())
                       .toUtf8());
    }

    QStringList arguments() const
    {
        return {QStringLiteral("-p"),         m_authority.folder(), QStringLiteral("-c"),
                QStringLiteral("nginx.conf"), QStringLiteral("-e"), QStringLiteral("error.log")};
    }

    QList<QByteArray> workers() const
    {
        QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(m_nginx.processId()));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().split(' ') : QList<QByteArray>{{}};
    }

    /// A socket; -1 on failure.
    int connectToNginx() const
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const QByteArray path = m_authority.folder().toLocal8Bit() + "/tls.sock";
        qstrncpy(address.sun_path, path.constData(), sizeof(address.sun_path));
        const int nginx = socket(AF_UNIX, SOCK_STREAM, 0);
        if (connect(nginx, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0)
            return nginx;
        close(nginx);
        return -1;
    }

    void relay(RawServer::Connection &client)
    {
        const int nginx = connectToNginx();
        if (nginx < 0)
            return;
        std::size_t place = 0;
        {
            const std::lock_guard lock(m_mutex);
            place = m_connections.size();
            m_connections.emplace_back();
            ++m_open;
        }
        bool clientSpoke = false;
        client.relay(nginx, latency, [&](bool isFromClient, qsizetype size) {
            const std::lock_guard lock(m_mutex);
            Carried &carried = m_connections[place];
            (isFromClient ? carried.up : carried.down) += size;
            if (isFromClient != std::exchange(clientSpoke, isFromClient) && !isFromClient)
                ++carried.roundTrips;
        });
        close(nginx);
        --m_open;
    }

    static constexpr std::chrono::milliseconds latency{5};
    const TestAuthority &m_authority;
    QProcess m_nginx;
    mutable std::mutex m_mutex;
    std::vector<Carried> m_connections;
    std::atomic<int> m_open = 0;
    RawServer m_secure, m_plain;
};
