#pragma once

#include "RawServer.h"

#include <QDir>
#include <QFile>

#include <atomic>
#include <map>

/// Serves the files of a folder over HTTP, and gets slow or breaks where the test wants it. A path below "/live/" is
/// a stream without length and ranges.
class MediaServer
{
public:
    explicit MediaServer(const QDir &folder)
    {
        for (const auto &name : folder.entryList(QDir::Files)) {
            QFile file(folder.filePath(name));
            if (file.open(QIODevice::ReadOnly))
                m_files["/" + name.toUtf8()] = file.readAll();
        }
    }

    QUrl url(const QString &path) const { return m_server.url("/" + path.toUtf8()); }
    /// Sends no more than this part of a file until the next call; 1 is all.
    void sendUpTo(double part) { m_part = part; }
    /// Closes the connections that are waiting, and each further one.
    void setBroken(bool broken) { m_isBroken = broken; }

private:
    void serve(RawServer::Connection &connection)
    {
        for (auto request = connection.readRequest(); !request.isEmpty() && !m_isBroken;
             request = connection.readRequest()) {
            auto path = request.split(' ').value(1);
            const bool isLive = path.startsWith("/live/");
            if (isLive)
                path.remove(0, 5);
            const auto file = m_files.find(path);
            if (file == m_files.end())
                connection.write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
            else if (!send(connection, file->second, isLive ? "" : request) || isLive)
                return;
        }
    }

    bool send(RawServer::Connection &connection, const QByteArray &body, const QByteArray &request)
    {
        static const QByteArray key = "range: bytes=";
        const auto at = request.toLower().indexOf(key);
        const auto from = at < 0 ? 0 : request.mid(at + key.size()).split('-').first().toLongLong();
        QByteArray head = at < 0 ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 206 Partial Content\r\n";
        if (at >= 0)
            head += "Content-Range: bytes " + QByteArray::number(from) + "-" + QByteArray::number(body.size() - 1) +
                    "/" + QByteArray::number(body.size()) + "\r\n";
        if (!request.isEmpty())
            head += "Accept-Ranges: bytes\r\nContent-Length: " + QByteArray::number(body.size() - from) + "\r\n";
        if (!connection.write(head + "\r\n"))
            return false;
        int waits = 0; // A backend may block the test until it has opened the file.
        for (auto sent = from; sent < body.size();) {
            const auto allowed = qRound64(static_cast<double>(body.size()) * m_part);
            if (sent < allowed || waits > 600) {
                const auto piece = body.mid(sent, waits > 600 ? 16384 : std::min(allowed - sent, qint64(16384)));
                if (!connection.write(piece))
                    return false;
                sent += piece.size();
            } else if (++waits, m_isBroken || connection.pause(std::chrono::milliseconds(5))) {
                return false;
            }
        }
        return true;
    }

    std::map<QByteArray, QByteArray> m_files;
    std::atomic<double> m_part = 1;
    std::atomic<bool> m_isBroken = false;
    RawServer m_server{[this](RawServer::Connection &connection) { serve(connection); }};
};
