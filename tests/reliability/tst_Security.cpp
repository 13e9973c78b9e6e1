#include "HttpLoad.h"
#include "Routes.h"
#include "TestAuthority.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace zelvano;

/// Attacks on the library.
class tst_Security : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void cleanup() { TestAuthority::trusted.clear(); }

    void certificatesAndRedirects()
    {
        const auto named = u"localhost"_s;
        const std::tuple<const char *, QString, bool, QByteArray, http::ErrorCode> cases[] = {
            {"trusted", named, true, "", http::ErrorCode()},
            {"unknown", named, false, "", http::ErrorCode::SecureConnectionFailed},
            {"of another host", u"127.0.0.1"_s, true, "", http::ErrorCode::SecureConnectionFailed},
            {"redirect to https", named, true, "/answer", http::ErrorCode()},
            {"redirect to http", named, true, "http://", http::ErrorCode::BadAnswer},
            {"redirect to a file", named, true, "file:///etc/hostname", http::ErrorCode::BadAnswer},
        };
        for (const auto &[name, host, isTrusted, target, error] : cases) {
            const Case current(name);
            RawServer plain(always(httpAnswer("{}")));
            QProcess server;
            QVERIFY(start(server, {u"-HTTP"_s}));
            TestAuthority::trusted = isTrusted ? m_authority.file() : QByteArray();
            serve("answer", httpAnswer("{}"));
            const auto location = target == "http://" ? plain.url("/answer").toEncoded() : target;
            serve("moved", httpRedirect("302", location + "\r\nConnection: close"));
            const auto path = target.isEmpty() ? u"answer"_s : u"moved"_s;
            auto request = httpGet(QUrl(u"https://%1:%2/%3"_s.arg(host).arg(m_port).arg(path)));
            request.setHeader("x-api-key", "secret");
            QCOMPARE(HttpLoad(request).resume().result().errorCode(), int(error));
            QCOMPARE(plain.accepted(), 0);
            server.kill();
            server.waitForFinished();
        }
    }

    /// Headers named "x-..." follow from http to https of the same name, but not back.
    void upgradeToHttps()
    {
        TestAuthority::trusted = m_authority.file();
        for (const bool isSentBack : {false, true}) {
            QProcess server;
            QVERIFY(start(server, {}));
            http::Routes::set("localhost:443", "127.0.0.1:" + QByteArray::number(m_port));
            RawServer plain([&](RawServer::Connection &connection) {
                for (QByteArray seen; !(seen = connection.readRequest()).isEmpty();)
                    connection.write(seen.startsWith("GET /back") ? httpAnswer("{}")
                                                                  : httpRedirect("302", "https://localhost/"));
            });
            const auto local = u"http://localhost:%1/"_s.arg(plain.url().port());
            auto request = httpGet(QUrl(local));
            request.setHeader("x-api-key", "secret");
            HttpLoad load(request);
            load.resume();
            QByteArray received;
            while (!received.contains("\r\n\r\n") && server.waitForReadyRead(10000))
                received += server.readAllStandardOutput();
            server.write(isSentBack ? httpRedirect("302", local.toLatin1() + "back") : httpAnswer("{}"));
            server.waitForBytesWritten(10000);
            QCOMPARE(load.result().status, 200);
            QVERIFY(received.contains("x-api-key: secret"));
            QCOMPARE(plain.requests().size(), isSentBack ? 2u : 1u);
            QCOMPARE(plain.requests().back().contains("secret"), !isSentBack);
            server.kill();
            server.waitForFinished();
        }
        http::Routes::set("localhost:443", {});
    }

private:
    /// A TLS server on a free port. With "-HTTP" it serves the files of the folder, otherwise it prints what it
    /// receives and sends its input.
    bool start(QProcess &server, const QStringList &mode)
    {
        server.setWorkingDirectory(m_authority.folder());
        server.start(u"openssl"_s, QStringList{u"s_server"_s, u"-accept"_s, u"127.0.0.1:0"_s, u"-cert"_s, u"cert.pem"_s,
                                               u"-key"_s, u"key.pem"_s} +
                                       mode);
        QByteArray said;
        while (!said.contains("ACCEPT") && server.waitForReadyRead(10000))
            said += server.readAllStandardOutput();
        const auto found = QRegularExpression(u"ACCEPT \\S*:(\\d+)"_s).match(QString::fromLatin1(said));
        m_port = found.captured(1).toInt();
        return m_port > 0;
    }

    void serve(const QByteArray &name, const QByteArray &answer) const
    {
        QFile file(m_authority.folder() + u'/' + QString::fromLatin1(name));
        file.open(QIODevice::WriteOnly);
        file.write(answer);
    }

    const TestAuthority m_authority{u"DNS:localhost"_s};
    int m_port = 0;
};

QTEST_GUILESS_MAIN(tst_Security)
#include "tst_Security.moc"
