#include "UrlLoad.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

using Connection = RawServer::Connection;
Q_DECLARE_METATYPE(RawServer::Script)

namespace {

const QByteArray Ok = "HTTP/1.1 200 OK\r\n";
const QByteArray GzipOfHello = QByteArray::fromHex("1f8b0800000000000003cb48cdc9c9070086a6103605000000");

QByteArray gzipAnswer(const QByteArray &body)
{
    return httpAnswer(body, Ok + "Content-Encoding: gzip");
}

RawServer::Script drip(const QByteArray &quick, const QByteArray &slow, std::chrono::milliseconds gap)
{
    return [=](Connection &connection) {
        while (connection.readRequest().startsWith("GET /warm-up"))
            connection.write(httpAnswer("warm"));
        bool isOpen = connection.write(quick);
        for (qsizetype at = 0; isOpen && at < slow.size() && !connection.pause(gap); ++at)
            isOpen = connection.write(slow.mid(at, 1));
    };
}

/// One answer to the first request of a connection, another to those after it.
RawServer::Script inTurn(const QByteArray &first, const QByteArray &second)
{
    return [=](RawServer::Connection &connection) {
        connection.readRequest();
        connection.write(first);
        while (!connection.readRequest().isEmpty())
            connection.write(second);
    };
}

/// A body without an end.
void endless(Connection &connection)
{
    connection.readRequest();
    const QByteArray piece(1024 * 1024, 'x');
    for (bool isOpen = connection.write(Ok + "\r\n"); isOpen;)
        isOpen = connection.write(piece);
}

} // namespace

/// One request and its answer, from a server that says exactly the given bytes: every outcome, what goes out, and what
/// is refused.
class tst_UrlSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void outcomes_data()
    {
        addColumns<RawServer::Script, bool, int, QByteArray, UrlError>(
            {"script", "isSecure", "status", "data", "error"});
        const auto answers = [](const char *name, const RawServer::Script &script, int status, const QByteArray &data) {
            QTest::newRow(name) << script << false << status << data << UrlError();
        };
        answers("200", always(httpAnswer("{}")), 200, "{}");
        answers("404 with a body", always(httpAnswer("gone", "HTTP/1.1 404 Not Found")), 404, "gone");
        answers("500 without a body", always(httpAnswer("", "HTTP/1.1 500 Oh")), 500, "");
        answers("204", always("HTTP/1.1 204 No Content\r\n\r\n"), 204, "");
        answers("until closed", once(Ok + "\r\nall"), 200, "all");
        answers("chunked", always(Ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"), 200,
                "abcde");
        answers("trailers", always(Ok + "Transfer-Encoding: chunked\r\nTrailer: X\r\n\r\n1\r\na\r\n0\r\nX: y\r\n\r\n"),
                200, "a");
        answers("after an interim answer", always("HTTP/1.1 103 Early Hints\r\n\r\n" + httpAnswer("x")), 200, "x");
        answers("gzip", always(gzipAnswer(GzipOfHello)), 200, "hello");

        const auto fails = [](const char *name, const RawServer::Script &script, UrlError error,
                              bool isSecure = false) {
            QTest::newRow(name) << script << isSecure << 0 << QByteArray() << error;
        };
        fails(
            "closed at once", [](Connection &) {}, UrlError::ConnectionLost);
        fails(
            "closed before the handshake", [](Connection &) {}, UrlError::SecureConnectionFailed, true);
        const auto noHandshake = [](Connection &connection) { connection.write("HTTP/1.1 400 Bad Request\r\n\r\n"); };
        fails("no handshake", noHandshake, UrlError::SecureConnectionFailed, true);
        fails("closed before the answer", once(""), UrlError::ConnectionLost);
        fails("closed within the head", once(Ok + "Content-Le"), UrlError::ConnectionLost);
        fails("closed within the body", once(Ok + "Content-Length: 10\r\n\r\nabc"), UrlError::ConnectionLost);
        fails("closed within a chunk", once(Ok + "Transfer-Encoding: chunked\r\n\r\n9\r\nabc"),
              UrlError::ConnectionLost);
        fails("gzip cut", once(gzipAnswer(GzipOfHello).chopped(5)), UrlError::ConnectionLost);
        fails("gzip broken", always(gzipAnswer("plain text is no gzip")), UrlError::BadAnswer);
        fails("chunks broken", once(Ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\nabc"), UrlError::ConnectionLost);
        fails("no status line", once("garbage that is no status line\r\n\r\n"), UrlError::BadAnswer);
        fails("out of HTTP", always(httpRedirect("302", "file:///etc/hostname")), UrlError::BadAnswer);
        fails("redirect loop", always(httpRedirect("302", "/again")), UrlError::TooManyRedirects);
        fails("declared too large", always(Ok + "Content-Length: 67108865\r\n\r\n"), UrlError::AnswerTooLarge);
        const QByteArray filler = QByteArray("X-Filler: 0123456789\r\n").repeated(20000);
        fails("too large", endless, UrlError::AnswerTooLarge);
        fails("endless head", always(Ok + filler + "\r\n"), UrlError::AnswerTooLarge);
    }

    void outcomes()
    {
        QFETCH(const RawServer::Script, script);
        QFETCH(const bool, isSecure);
        QFETCH(const UrlError, error);
        RawServer server(script);
        const UrlResult result = UrlLoad(urlGet(server.url("/", isSecure))).resume().result();
        QCOMPARE(result.errorCode(), int(error));
        QTEST(result.status(), "status");
        QTEST(result.data, "data");
        QCOMPARE(result.response.has_value(), !result.error);
        if (result.response)
            QCOMPARE(result.response->url, server.url());
        if (result.error) {
            QCOMPARE(result.error->domain, QString(UrlErrorDomain));
            QCOMPARE(result.error->description, result.error->description.simplified());
            QVERIFY(!result.error->description.isEmpty());
        }
    }

    void timesOut_data()
    {
        addColumns<RawServer::Script, bool>({"script", "isSecure"});
        const RawServer::Script noWord = [](Connection &connection) { connection.awaitClose(); };
        QTest::newRow("no answer") << silence() << false;
        QTest::newRow("half a head") << drip(Ok + "Content-", "x", 1h) << false;
        QTest::newRow("half a body") << drip(Ok + "Content-Length: 10\r\n\r\nabc", "x", 1h) << false;
        QTest::newRow("no handshake") << noWord << true;
    }

    void timesOut()
    {
        QFETCH(const RawServer::Script, script);
        QFETCH(const bool, isSecure);
        RawServer server(script);
        const auto start = std::chrono::steady_clock::now();
        const UrlResult result = UrlLoad(urlGet(server.url("/", isSecure), 200ms)).resume().result();
        const auto taken = std::chrono::steady_clock::now() - start;
        QCOMPARE(result.errorCode(), int(UrlError::TimedOut));
        QVERIFY(taken >= 190ms);
        QVERIFY(taken < 2s);
    }

    void slowIsNotSilent_data()
    {
        addColumns<QByteArray, QByteArray, bool>({"quick", "slow", "onReusedConnection"});
        QTest::newRow("head") << QByteArray() << Ok + "Content-Length: 0\r\n\r\n" << false;
        QTest::newRow("head, reused") << QByteArray() << Ok + "Content-Length: 0\r\n\r\n" << true;
        QTest::newRow("body") << Ok + "Content-Length: 12\r\n\r\n" << QByteArray("twelve bytes") << false;
        QTest::newRow("gzip") << Ok + "Content-Encoding: gzip\r\nContent-Length: 25\r\n\r\n" << GzipOfHello << false;
    }

    void slowIsNotSilent()
    {
        QFETCH(const QByteArray, quick);
        QFETCH(const QByteArray, slow);
        QFETCH(const bool, onReusedConnection);
        RawServer server(drip(quick, slow, 50ms));
        if (onReusedConnection)
            QCOMPARE(UrlLoad(urlGet(server.url("/warm-up"))).resume().result().status(), 200);
        const auto start = std::chrono::steady_clock::now();
        QCOMPARE(UrlLoad(urlGet(server.url(), 400ms)).resume().result().status(), 200);
        QVERIFY(std::chrono::steady_clock::now() - start > 400ms);
        QCOMPARE(server.accepted(), 1);
    }

    void badRequests()
    {
        const auto errorOf = [](const UrlRequest &request) {
            const auto result = UrlLoad(request).resume().result();
            return result.thread == std::this_thread::get_id() ? -1 : result.errorCode();
        };
        for (const char *url :
             {"", "/path", "http:///path", "http://host:port/", "file:///etc/hostname", "ftp://127.0.0.1/"})
            QVERIFY2(errorOf(urlGet(QUrl(QLatin1StringView(url)))) == int(UrlError::BadUrl), url);
        auto twoLines = urlGet(QUrl(u"http://127.0.0.1/"_s));
        twoLines.method = "GET / HTTP/1.1\r\nX: y";
        QCOMPARE(errorOf(twoLines), int(UrlError::BadUrl));
    }

    void redirects()
    {
        for (const QByteArray status : {"301", "302", "303", "307", "308"}) {
            RawServer server(inTurn(httpRedirect(status, "/new"), httpAnswer("arrived")));
            const UrlResult result = UrlLoad(urlPost(server.url("/old"), "the body")).resume().result();
            QCOMPARE(result.data, "arrived");
            QCOMPARE(result.response->url, server.url("/new"));
            const auto requests = server.requests();
            QCOMPARE(requests.size(), 2u);
            const QByteArray second = requests.back();
            const bool isRepeated = status > "303";
            QVERIFY2(second.startsWith(isRepeated ? "POST /new HTTP/1.1\r" : "GET /new HTTP/1.1\r"),
                     status.constData());
            QCOMPARE(second.mid(second.indexOf("\r\n\r\n") + 4), isRepeated ? "the body" : "");
        }
    }

    void secretsStayWithTheirHost()
    {
        RawServer other(always(httpAnswer("other")));
        RawServer server(always(httpRedirect("307", other.url("/there").toEncoded())));
        UrlRequest request = urlPost(server.url(), "{}");
        request.setHeader("X-Api-Key", "secret");
        request.setHeader("Content-Type", "application/json");
        QCOMPARE(UrlLoad(request).resume().result().data, "other");
        QVERIFY(server.requests().front().contains("\r\nX-Api-Key: secret\r\n"));
        QVERIFY(!other.requests().front().contains("secret"));
        QVERIFY(other.requests().front().contains("\r\nContent-Type: application/json\r\n"));
        // The easy handle was changed under way: its next job has all of its headers again.
        QCOMPARE(UrlLoad(request).resume().result().data, "other");
        QVERIFY(server.requests().back().contains("\r\nX-Api-Key: secret\r\n"));
    }

    void requestBytes_data()
    {
        addColumns<QByteArray, QByteArray, QByteArray>({"method", "body", "expected"});
        const QByteArray accept = "Host: %1\r\nAccept: */*\r\nAccept-Encoding: deflate, gzip, br, zstd\r\n";
        const auto row = [&](const char *method, const QByteArray &body, const QByteArray &rest) {
            QTest::addRow("%s %s", method, body.isNull() ? "null" : body.constData())
                << QByteArray(method) << body << method + (" /p?q=1 HTTP/1.1\r\n" + accept) + rest;
        };
        row("GET", {}, "X-A: b\r\n\r\n");
        row("HEAD", {}, "X-A: b\r\n\r\n");
        row("DELETE", {}, "X-A: b\r\n\r\n");
        row("POST", {}, "X-A: b\r\nContent-Length: 0\r\n\r\n");
        row("POST", "", "X-A: b\r\nContent-Length: 0\r\n\r\n");
        row("POST", "{}", "X-A: b\r\nContent-Length: 2\r\n\r\n{}");
        row("PUT", "{}", "X-A: b\r\nContent-Length: 2\r\n\r\n{}");
    }

    void requestBytes()
    {
        QFETCH(const QByteArray, method);
        QFETCH(const QByteArray, body);
        QFETCH(QByteArray, expected);
        RawServer server(always(httpAnswer("")));
        UrlRequest request = urlGet(server.url("/p?q=1#fragment"));
        request.method = method;
        request.body = body;
        request.setHeader("x-a", "replaced");
        request.setHeader("X-A", "b");
        request.headers.emplace_back("X-Bad", "set\r\npast: the check");
        QCOMPARE(UrlLoad(request).resume().result().status(), 200);
        QCOMPARE(server.requests().front(), expected.replace("%1", server.hostAndPort()));
    }

    void routeKeepsTheHost()
    {
        RawServer one(always(httpAnswer("one")));
        RawServer two(always(httpAnswer("two")));
        const QUrl url(u"http://Service.Test/path"_s);
        // What the environment names is for the production host, not for its stand-in.
        qputenv("http_proxy", "http://127.0.0.1:1");
        UrlSession::connectTo("service.test:80", one.hostAndPort());
        QCOMPARE(UrlLoad(urlGet(url)).resume().result().data, "one");
        UrlSession::connectTo("service.test:80", two.hostAndPort());
        QCOMPARE(UrlLoad(urlGet(url)).resume().result().data, "two");
        QVERIFY(one.requests().front().contains("\r\nHost: service.test\r\n"));
        UrlSession::connectTo("service.test:80", {});
        QCOMPARE(UrlLoad(urlGet(url)).resume().result().errorCode(), int(UrlError::CannotConnect));
        qunsetenv("http_proxy");
    }
};

QTEST_APPLESS_MAIN(tst_UrlSession)
#include "tst_UrlSession.moc"
