#include "UrlLoad.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

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

} // namespace

/// What goes out: the bytes of a request, its redirects and routes, and what is refused.
class tst_UrlRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void badRequests_data();
    void badRequests();
    void redirects_data();
    void redirects();
    void secretsStayWithTheirHost();
    void requestBytes_data();
    void requestBytes();
    void headerReplacedWhateverItsCase();
    void routeKeepsTheHost();
};

void tst_UrlRequest::badRequests_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("no URL") << QUrl() << QByteArray("GET");
    QTest::newRow("relative") << QUrl(u"/path"_s) << QByteArray("GET");
    QTest::newRow("no host") << QUrl(u"http:///path"_s) << QByteArray("GET");
    QTest::newRow("not parsable") << QUrl(u"http://host:port/"_s) << QByteArray("GET");
    QTest::newRow("file") << QUrl(u"file:///etc/hostname"_s) << QByteArray("GET");
    QTest::newRow("ftp") << QUrl(u"ftp://127.0.0.1/"_s) << QByteArray("GET");
    QTest::newRow("method of two lines") << QUrl(u"http://127.0.0.1/"_s) << QByteArray("GET / HTTP/1.1\r\nX: y");
}

void tst_UrlRequest::badRequests()
{
    QFETCH(const QUrl, url);
    QFETCH(const QByteArray, method);
    UrlRequest request = urlGet(url);
    request.method = method;
    const UrlResult result = UrlLoad(request).resume().result();
    QCOMPARE(result.errorCode(), int(UrlError::BadUrl));
    QVERIFY(result.thread != std::this_thread::get_id());
}

void tst_UrlRequest::redirects_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("secondLine");
    QTest::addColumn<QByteArray>("secondBody");
    for (const char *status : {"301", "302", "303"})
        QTest::newRow(status) << QByteArray(status) << QByteArray("GET /new HTTP/1.1") << QByteArray();
    for (const char *status : {"307", "308"})
        QTest::newRow(status) << QByteArray(status) << QByteArray("POST /new HTTP/1.1") << QByteArray("the body");
}

void tst_UrlRequest::redirects()
{
    QFETCH(const QByteArray, status);
    QFETCH(const QByteArray, secondLine);
    QFETCH(const QByteArray, secondBody);
    RawServer server(inTurn(httpRedirect(status, "/new"), httpAnswer("arrived")));
    const UrlResult result = UrlLoad(urlPost(server.url("/old"), "the body")).resume().result();
    QCOMPARE(result.data, "arrived");
    QCOMPARE(result.response->url, server.url("/new"));
    const auto requests = server.requests();
    QCOMPARE(requests.size(), 2u);
    const QByteArray second = requests.back();
    QCOMPARE(second.left(second.indexOf('\r')), secondLine);
    QCOMPARE(second.mid(second.indexOf("\r\n\r\n") + 4), secondBody);
}

void tst_UrlRequest::secretsStayWithTheirHost()
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

void tst_UrlRequest::requestBytes_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("expected");
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

void tst_UrlRequest::requestBytes()
{
    QFETCH(const QByteArray, method);
    QFETCH(const QByteArray, body);
    QFETCH(QByteArray, expected);
    RawServer server(always(httpAnswer("")));
    UrlRequest request = urlGet(server.url("/p?q=1#fragment"));
    request.method = method;
    request.body = body;
    request.setHeader("X-A", "b");
    request.headers.emplace_back("X-Bad", "set\r\npast: the check");
    QCOMPARE(UrlLoad(request).resume().result().status(), 200);
    QCOMPARE(server.requests().front(), expected.replace("%1", server.hostAndPort()));
}

void tst_UrlRequest::headerReplacedWhateverItsCase()
{
    UrlRequest request;
    request.setHeader("Content-Type", "text/plain");
    request.setHeader("X-Other", "1");
    request.setHeader("content-type", "application/json");
    const std::vector<std::pair<QByteArray, QByteArray>> expected = {{"content-type", "application/json"},
                                                                     {"X-Other", "1"}};
    QCOMPARE(request.headers, expected);
}

void tst_UrlRequest::routeKeepsTheHost()
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

QTEST_APPLESS_MAIN(tst_UrlRequest)
#include "tst_UrlRequest.moc"
