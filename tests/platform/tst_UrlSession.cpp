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

} // namespace

/// One request and its answer: every outcome, from a server that says exactly the given bytes.
class tst_UrlSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void outcomes_data();
    void outcomes();
    void unreachable();
    void secureFailures_data();
    void secureFailures();
    void tooLargeUndeclared();
    void timesOut_data();
    void timesOut();
    void slowIsNotSilent_data();
    void slowIsNotSilent();
};

void tst_UrlSession::outcomes_data()
{
    QTest::addColumn<RawServer::Script>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<UrlError>("error");
    const auto answers = [](const char *name, const RawServer::Script &script, int status, const QByteArray &data) {
        QTest::newRow(name) << script << status << data << UrlError();
    };
    answers("200", always(httpAnswer("{}")), 200, "{}");
    answers("404 with a body", always(httpAnswer("gone", "HTTP/1.1 404 Not Found")), 404, "gone");
    answers("500 without a body", always(httpAnswer("", "HTTP/1.1 500 Oh")), 500, "");
    answers("204", always("HTTP/1.1 204 No Content\r\n\r\n"), 204, "");
    answers("until closed", once(Ok + "\r\nall"), 200, "all");
    answers("chunked", always(Ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"), 200, "abcde");
    answers("trailers", always(Ok + "Transfer-Encoding: chunked\r\nTrailer: X\r\n\r\n1\r\na\r\n0\r\nX: y\r\n\r\n"), 200,
            "a");
    answers("after an interim answer", always("HTTP/1.1 103 Early Hints\r\n\r\n" + httpAnswer("x")), 200, "x");
    answers("gzip", always(gzipAnswer(GzipOfHello)), 200, "hello");

    const auto fails = [](const char *name, const RawServer::Script &script, UrlError error) {
        QTest::newRow(name) << script << 0 << QByteArray() << error;
    };
    fails(
        "closed at once", [](Connection &) {}, UrlError::ConnectionLost);
    fails("closed before the answer", once(""), UrlError::ConnectionLost);
    fails("closed within the head", once(Ok + "Content-Le"), UrlError::ConnectionLost);
    fails("closed within the body", once(Ok + "Content-Length: 10\r\n\r\nabc"), UrlError::ConnectionLost);
    fails("closed within a chunk", once(Ok + "Transfer-Encoding: chunked\r\n\r\n9\r\nabc"), UrlError::ConnectionLost);
    fails("gzip cut", once(gzipAnswer(GzipOfHello).chopped(5)), UrlError::ConnectionLost);
    fails("gzip broken", always(gzipAnswer("plain text is no gzip")), UrlError::BadAnswer);
    fails("chunks broken", once(Ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\nabc"), UrlError::ConnectionLost);
    fails("no status line", once("garbage that is no status line\r\n\r\n"), UrlError::BadAnswer);
    fails("out of HTTP", always(httpRedirect("302", "file:///etc/hostname")), UrlError::BadAnswer);
    fails("redirect loop", always(httpRedirect("302", "/again")), UrlError::TooManyRedirects);
    fails("declared too large", always(Ok + "Content-Length: 67108865\r\n\r\n"), UrlError::AnswerTooLarge);
    const QByteArray filler = QByteArray("X-Filler: 0123456789\r\n").repeated(20000);
    fails("endless head", always(Ok + filler + "\r\n"), UrlError::AnswerTooLarge);
}

void tst_UrlSession::outcomes()
{
    QFETCH(const RawServer::Script, script);
    QFETCH(const int, status);
    QFETCH(const QByteArray, data);
    QFETCH(const UrlError, error);
    RawServer server(script);
    const UrlResult result = UrlLoad(urlGet(server.url())).resume().result();
    QCOMPARE(result.errorCode(), int(error));
    QCOMPARE(result.status(), status);
    QCOMPARE(result.data, data);
    QCOMPARE(result.response.has_value(), !result.error);
    if (result.response)
        QCOMPARE(result.response->url, server.url());
    if (result.error) {
        QCOMPARE(result.error->domain, QString(UrlErrorDomain));
        QCOMPARE(result.error->description, result.error->description.simplified());
        QVERIFY(!result.error->description.isEmpty());
    }
}

void tst_UrlSession::unreachable()
{
    const QUrl url = RawServer(silence()).url();
    QCOMPARE(UrlLoad(urlGet(url)).resume().result().errorCode(), int(UrlError::CannotConnect));
}

void tst_UrlSession::secureFailures_data()
{
    QTest::addColumn<RawServer::Script>("script");
    QTest::newRow("closed at once") << RawServer::Script([](Connection &) {});
    QTest::newRow("plain HTTP") << RawServer::Script(
        [](Connection &c) { c.write("HTTP/1.1 400 Bad Request\r\n\r\n"); });
}

void tst_UrlSession::secureFailures()
{
    QFETCH(const RawServer::Script, script);
    RawServer server(script);
    QUrl url = server.url();
    url.setScheme(u"https"_s);
    QCOMPARE(UrlLoad(urlGet(url)).resume().result().errorCode(), int(UrlError::SecureConnectionFailed));
}

void tst_UrlSession::tooLargeUndeclared()
{
    RawServer server([](Connection &connection) {
        connection.readRequest();
        const QByteArray piece(1024 * 1024, 'x');
        for (bool isOpen = connection.write(Ok + "\r\n"); isOpen;)
            isOpen = connection.write(piece);
    });
    QCOMPARE(UrlLoad(urlGet(server.url())).resume().result().errorCode(), int(UrlError::AnswerTooLarge));
}

void tst_UrlSession::timesOut_data()
{
    QTest::addColumn<RawServer::Script>("script");
    QTest::addColumn<QString>("scheme");
    const RawServer::Script noWord = [](Connection &connection) { connection.awaitClose(); };
    QTest::newRow("no answer") << silence() << u"http"_s;
    QTest::newRow("half a head") << drip(Ok + "Content-", "x", 1h) << u"http"_s;
    QTest::newRow("half a body") << drip(Ok + "Content-Length: 10\r\n\r\nabc", "x", 1h) << u"http"_s;
    QTest::newRow("no handshake") << noWord << u"https"_s;
}

void tst_UrlSession::timesOut()
{
    QFETCH(const RawServer::Script, script);
    QFETCH(const QString, scheme);
    RawServer server(script);
    QUrl url = server.url();
    url.setScheme(scheme);
    const auto start = std::chrono::steady_clock::now();
    const UrlResult result = UrlLoad(urlGet(url, 200ms)).resume().result();
    const auto taken = std::chrono::steady_clock::now() - start;
    QCOMPARE(result.errorCode(), int(UrlError::TimedOut));
    QVERIFY(taken >= 190ms);
    QVERIFY(taken < 2s);
}

void tst_UrlSession::slowIsNotSilent_data()
{
    QTest::addColumn<QByteArray>("quick");
    QTest::addColumn<QByteArray>("slow");
    QTest::addColumn<bool>("onReusedConnection");
    QTest::newRow("head") << QByteArray() << Ok + "Content-Length: 0\r\n\r\n" << false;
    QTest::newRow("head, reused") << QByteArray() << Ok + "Content-Length: 0\r\n\r\n" << true;
    QTest::newRow("body") << Ok + "Content-Length: 12\r\n\r\n" << QByteArray("twelve bytes") << false;
    QTest::newRow("gzip") << Ok + "Content-Encoding: gzip\r\nContent-Length: 25\r\n\r\n" << GzipOfHello << false;
}

void tst_UrlSession::slowIsNotSilent()
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

QTEST_APPLESS_MAIN(tst_UrlSession)
#include "tst_UrlSession.moc"
