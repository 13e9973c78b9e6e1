#include "HttpLoad.h"
#include "Origin.h"
#include "Process.h"
#include "Routes.h"
#include "SkippedTime.h"

#include <QRegularExpression>

#include <semaphore>
#include <variant>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using namespace zelvano::http;
using Connection = RawServer::Connection;

namespace {

const QByteArray Ok = "HTTP/1.1 200 OK\r\n";
const QByteArray GzipOfHello = QByteArray::fromHex("1f8b0800000000000003cb48cdc9c9070086a6103605000000");

QByteArray gzipAnswer(const QByteArray &body)
{
    return httpAnswer(body, Ok + "Content-Encoding: gzip");
}

/// A body without an end.
RawServer::Script endless(const QByteArray &begin)
{
    return [=](Connection &connection) {
        connection.readRequest();
        const QByteArray piece(1024 * 1024, 'x');
        for (bool isOpen = connection.write(begin); isOpen;)
            isOpen = connection.write(piece);
    };
}

constexpr int Slots = 6;

/// Answers one request for each release of its gate.
class GatedServer
{
public:
    ~GatedServer() { open(1000); }
    void open(int count) { m_gate.release(count); }
    RawServer &raw() { return m_server; }

private:
    std::counting_semaphore<> m_gate{0};
    RawServer m_server{[this](Connection &connection) {
        while (!connection.readRequest().isEmpty()) {
            m_gate.acquire();
            connection.write(httpAnswer("{}"));
        }
    }};
};

} // namespace

/// One request: every outcome, the bytes sent, what is refused. Many requests: connections, slots, completions.
class tst_SessionTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void outcomes()
    {
        const RawServer::Script closed = [](Connection &) {};
        const auto resetAfter = [](const QByteArray &bytes) -> RawServer::Script {
            return [bytes](Connection &connection) {
                connection.readRequest();
                connection.write(bytes);
                connection.reset();
            };
        };
        const RawServer::Script noHandshake = [](Connection &connection) {
            connection.write("HTTP/1.1 400 Bad\r\n\r\n");
        };
        const auto chunked = Ok + "Transfer-Encoding: chunked\r\n\r\n";
        const auto longRedirect =
            "HTTP/1.1 302 Found\r\nLocation: /\r\nTransfer-Encoding: chunked\r\n\r\nfffffffff\r\n";
        const QByteArray filler = QByteArray("X-Filler: 0123456789\r\n").repeated(20000);
        const auto zlib = qCompress(QByteArray(65 << 20, ' '), 9).sliced(4); // Without Qt's four-byte header.
        const auto deflated = httpAnswer(zlib, Ok + "Content-Encoding: deflate");
        using Answer = std::pair<int, QByteArray>;
        const std::tuple<const char *, RawServer::Script, std::variant<Answer, ErrorCode>> cases[] = {
            {"status 200", always(httpAnswer("{}")), Answer(200, "{}")},
            {"status 404", always(httpAnswer("gone", "HTTP/1.1 404 Not Found")), Answer(404, "gone")},
            {"status 204", always("HTTP/1.1 204 No Content\r\n\r\n"), Answer(204, "")},
            {"without length", once(Ok + "\r\nuntil closed"), Answer(200, "until closed")},
            {"chunks", always(chunked + "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"), Answer(200, "abcde")},
            {"trailer", always(chunked + "7\r\ntrailer\r\n0\r\nX: y\r\n\r\n"), Answer(200, "trailer")},
            {"hints", always("HTTP/1.1 103 Early Hints\r\n\r\n" + httpAnswer("{}")), Answer(200, "{}")},
            {"gzip", always(gzipAnswer(GzipOfHello)), Answer(200, "hello")},
            {"closed at once", closed, ErrorCode::ConnectionLost},
            {"closed before the handshake", closed, ErrorCode::SecureConnectionFailed},
            {"no handshake", noHandshake, ErrorCode::SecureConnectionFailed},
            {"closed within the head", once(Ok + "Content-Le"), ErrorCode::ConnectionLost},
            {"closed within the body", once(Ok + "Content-Length: 10\r\n\r\nabc"), ErrorCode::ConnectionLost},
            {"closed within a chunk", once(chunked + "9\r\nabc"), ErrorCode::ConnectionLost},
            {"reset before the answer", resetAfter({}), ErrorCode::ConnectionLost},
            {"reset within the answer", resetAfter(httpAnswer("{}").chopped(1)), ErrorCode::ConnectionLost},
            {"gzip cut", once(gzipAnswer(GzipOfHello).chopped(5)), ErrorCode::ConnectionLost},
            {"gzip broken", always(gzipAnswer("plain text is no gzip")), ErrorCode::BadAnswer},
            {"chunks broken", once(chunked + "zz\r\nabc"), ErrorCode::ConnectionLost},
            {"no status line", once("garbage that is no status line\r\n\r\n"), ErrorCode::BadAnswer},
            {"status 0", once("HTTP/1.1 000 None\r\nContent-Length: 0\r\n\r\n"), ErrorCode::BadAnswer},
            {"interim answers only", once(QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(50)),
             ErrorCode::ConnectionLost},
            {"redirect to a closed port", always(httpRedirect("307", "http://127.0.0.2:1/")), ErrorCode::CannotConnect},
            {"out of HTTP", always(httpRedirect("302", "file:///etc/hostname")), ErrorCode::BadAnswer},
            {"redirect loop", always(httpRedirect("302", "/again")), ErrorCode::TooManyRedirects},
            {"declared too large", always(Ok + "Content-Length: 67108865\r\n\r\n"), ErrorCode::AnswerTooLarge},
            {"too large", endless(Ok + "\r\n"), ErrorCode::AnswerTooLarge},
            {"too large, redirected", endless(longRedirect), ErrorCode::AnswerTooLarge},
            {"too large, compressed", always(deflated), ErrorCode::AnswerTooLarge},
            {"endless head", always(Ok + filler + "\r\n"), ErrorCode::AnswerTooLarge},
        };
        for (const auto &[name, script, outcome] : cases) {
            const Case current(name);
            RawServer server(script);
            const auto *error = std::get_if<ErrorCode>(&outcome);
            const auto url = server.url("/", error && *error == ErrorCode::SecureConnectionFailed);
            const HttpResult result = HttpLoad(httpGet(url, 8s)).resume().result();
            QCOMPARE(result.errorCode(), error ? int(*error) : 0);
            QCOMPARE(Answer(result.status, result.data), error ? Answer() : std::get<Answer>(outcome));
            QCOMPARE(server.accepted(), 1); // Nothing is tried again.
            if (!error)
                continue;
            QCOMPARE(result.error->domain, QString(ErrorDomain));
            QVERIFY(!result.error->description.isEmpty());
            QCOMPARE(result.error->description, result.error->description.simplified());
        }
    }

    /// A transfer ends when no byte moves for 400 ms, or after its total timeout.
    void slowNetworks()
    {
        constexpr auto none = std::chrono::milliseconds::max();
        const auto lines = QByteArray("A:\r\n");
        const auto ofTwelve = Ok + "Content-Length: 12\r\n\r\n";
        const auto gzip = Ok + "Content-Encoding: gzip\r\nContent-Length: 25\r\n\r\n";
        const std::tuple<const char *, RawServer::Script, bool, std::chrono::milliseconds, bool> cases[] = {
            {"no answer", silence(), false, none, false},
            {"half a head", drip(Ok + "Content-", "x", 1h), false, none, false},
            {"half a body", drip(ofTwelve + "abc", "x", 1h), false, none, false},
            {"no handshake", silence(), true, none, false},
            {"dripping for too long", drip(Ok, lines.repeated(1000), 20ms), false, 500ms, false},
            {"dripping head", drip(Ok, lines.repeated(3) + "\r\n", 50ms), false, none, true},
            {"dripping body", drip(ofTwelve, "twelve bytes", 50ms), false, none, true},
            {"dripping gzip", drip(gzip, GzipOfHello, 50ms), false, none, true},
        };
        for (const auto &[name, script, isSecure, totalTimeout, isAnswered] : cases) {
            const Case current(name);
            RawServer server(script);
            const auto start = std::chrono::steady_clock::now();
            auto request = httpGet(server.url("/", isSecure), 400ms);
            request.totalTimeout = totalTimeout;
            const HttpResult result = HttpLoad(request).resume().result();
            const auto taken = std::chrono::steady_clock::now() - start;
            QCOMPARE(result.status, isAnswered ? 200 : 0);
            QCOMPARE(result.errorCode(), isAnswered ? 0 : int(ErrorCode::TimedOut));
            QVERIFY(taken >= 390ms && taken < 4s);
        }
    }

    void badRequests()
    {
        const auto errorOf = [](const Request &request) {
            const auto result = HttpLoad(request).resume().result();
            return result.thread == std::this_thread::get_id() ? -1 : result.errorCode();
        };
        for (const char *url :
             {"", "/path", "http:///path", "http://host:port/", "file:///etc/hostname", "ftp://127.0.0.1/"})
            QVERIFY2(errorOf(httpGet(QUrl(QLatin1StringView(url)))) == int(ErrorCode::BadUrl), url);
        auto twoLines = httpGet(QUrl(u"http://127.0.0.1/"_s));
        twoLines.method = "GET / HTTP/1.1\r\nX: y";
        QCOMPARE(errorOf(twoLines), int(ErrorCode::BadUrl));
    }

    void redirects()
    {
        for (const QByteArray status : {"301", "302", "303", "307", "308"}) {
            RawServer server([&](Connection &connection) {
                for (const auto &answer : {httpRedirect(status, "/new"), httpAnswer("arrived")}) {
                    connection.readRequest();
                    connection.write(answer);
                }
            });
            const HttpResult result = HttpLoad(httpPost(server.url("/old"), "the body")).resume().result();
            QCOMPARE(result.data, "arrived");
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
        Request request = httpPost(server.url(), "{}");
        request.setHeader("X-Api-Key", "secret");
        request.setHeader("Content-Type", "application/json");
        QCOMPARE(HttpLoad(request).resume().result().data, "other");
        QVERIFY(server.requests().front().contains("\r\nX-Api-Key: secret\r\n"));
        QVERIFY(!other.requests().front().contains("secret"));
        QVERIFY(other.requests().front().contains("\r\nContent-Type: application/json\r\n"));
        // The redirect changed the easy handle. Its next job has all headers again.
        QCOMPARE(HttpLoad(request).resume().result().data, "other");
        QVERIFY(server.requests().back().contains("\r\nX-Api-Key: secret\r\n"));
    }

    void sameService()
    {
        const std::tuple<const char *, const char *, bool> cases[] = {
            {"http://a/1", "http://A:80/2", true},    {"http://a/", "http://a:81/", false},
            {"http://a/", "http://b/", false},        {"http://a:81/", "https://a/", true},
            {"http://a/", "https://b/", false},       {"http://a:81/", "https://a:81/", false},
            {"https://a:81/", "http://a:81/", false}, {"https://a/", "http://a:443/", false},
        };
        for (const auto &[from, to, expected] : cases)
            QCOMPARE(isSameService(QUrl(QString::fromLatin1(from)), QUrl(QString::fromLatin1(to))), expected);
    }

    void requestBytes()
    {
        const QByteArray head = " /p?q=1 HTTP/1.1\r\nHost: %1\r\nAccept: */*\r\n"
                                "Accept-Encoding: deflate, gzip, br, zstd\r\nX-A: b\r\n";
        const std::tuple<QByteArray, QByteArray, QByteArray> cases[] = {
            {"GET", {}, ""},
            {"HEAD", {}, ""},
            {"POST", {}, "Content-Length: 0\r\n"},
            {"POST", "", "Content-Length: 0\r\n"},
            {"PUT", "{}", "Content-Length: 2\r\n"},
            {"POST", QByteArray(2'000'000, 'x'), "Content-Length: 2000000\r\n"}, // Waits for no "100 Continue".
        };
        for (const auto &[method, body, length] : cases) {
            RawServer server(always(httpAnswer("")));
            Request request = httpGet(server.url("/p?q=1#fragment"));
            request.method = method;
            request.body = body;
            request.setHeader("x-a", "replaced");
            request.setHeader("X-A", "b");
            request.headers.emplace_back("X-Bad", "set\r\npast: the check");
            QCOMPARE(HttpLoad(request).resume().result().status, 200);
            const auto expected = method + head + length + "\r\n" + body;
            QCOMPARE(server.requests().front(), QByteArray(expected).replace("%1", server.hostAndPort()));
        }
    }

    /// Handles may live on, as in the registry of calls.
    void bodyAndCompletionAreFreed()
    {
        RawServer server(always(httpAnswer("{}")));
        const QByteArray body(1000, 'x');
        auto owned = std::make_shared<int>();
        const std::weak_ptr<int> watched = owned;
        std::binary_semaphore hasRun(0);
        const auto task = Session::dataTask(httpPost(server.url(), body),
                                            [&hasRun, owned = std::move(owned)](auto &&...) { hasRun.release(); });
        QVERIFY(!body.isDetached());
        task->resume();
        QVERIFY(hasRun.try_acquire_for(10s));
        passCompletions();
        QVERIFY(body.isDetached() && watched.expired());
    }

    void idleConnections()
    {
        for (const auto &[seconds, connections] : {std::pair(14, 1), {16, 2}}) {
            RawServer server(always(httpAnswer("{}")));
            QCOMPARE(HttpLoad(httpGet(server.url())).resume().result().status, 200);
            skippedTime += seconds;
            QCOMPARE(HttpLoad(httpGet(server.url())).resume().result().status, 200);
            QCOMPARE(server.accepted(), connections);
        }
    }

    void routeKeepsTheHost()
    {
        RawServer one(always(httpAnswer("one")));
        RawServer two(always(httpAnswer("two")));
        const QUrl url(u"http://Service.Test/path"_s);
        // The environment's proxy is for the production host, not for the host that replaces it.
        qputenv("http_proxy", "http://127.0.0.1:1");
        Routes::set("service.test:80", one.hostAndPort());
        QCOMPARE(HttpLoad(httpGet(url)).resume().result().data, "one");
        Routes::set("service.test:80", two.hostAndPort());
        QCOMPARE(HttpLoad(httpGet(url)).resume().result().data, "two");
        QVERIFY(one.requests().front().contains("\r\nHost: service.test\r\n"));
        Routes::set("service.test:80", {});
        QCOMPARE(HttpLoad(httpGet(url)).resume().result().errorCode(), int(ErrorCode::CannotConnect));
        qunsetenv("http_proxy");
    }

    void sixAtOnceInOrder()
    {
        GatedServer server;
        auto loads = resumed(20, server.raw().url());
        QVERIFY(server.raw().awaitRequests(Slots));
        RawServer quick(always(httpAnswer("{}"))); // Another host does not wait.
        QCOMPARE(HttpLoad(httpGet(quick.url())).resume().result().status, 200);
        for (size_t next = Slots; next < loads.size(); ++next) {
            // A seventh request that went out without a slot would exceed this count.
            QCOMPARE(server.raw().requests().size(), next);
            server.open(1);
            QVERIFY(server.raw().awaitRequests(next + 1));
            QVERIFY(server.raw().requests().back().startsWith("GET /" + QByteArray::number(qsizetype(next)) + ' '));
        }
        server.open(Slots);
        for (HttpLoad &load : loads)
            QCOMPARE(load.result().status, 200);
        QCOMPARE(server.raw().accepted(), Slots);
    }

    void neverTwice()
    {
        for (const QByteArray &body : {QByteArray(), QByteArray("{}"), QByteArray(300000, 'x')}) {
            auto request = body.isNull() ? httpGet({}) : httpPost({}, body);
            RawServer server([](Connection &connection) {
                connection.readRequest();
                connection.write(httpAnswer("{}"));
                connection.readRequest();
            });
            const int rounds = figure("ZELVANO_ROUNDS", 200);
            for (int round = 0; round < rounds; ++round) {
                request.url = server.url("/first");
                QCOMPARE(HttpLoad(request).resume().result().status, 200);
                request.url = server.url("/second");
                QCOMPARE(HttpLoad(request).resume().result().errorCode(), int(ErrorCode::ConnectionLost));
            }
            QCOMPARE(server.requests().size(), size_t(2 * rounds));
        }
    }

    void cancelWhileActiveAndQueued()
    {
        GatedServer server;
        auto loads = resumed(Slots + 3, server.raw().url());
        QVERIFY(server.raw().awaitRequests(Slots));
        for (const auto cancelled : {Slots + 1, 2}) {
            auto &load = loads[std::size_t(cancelled)];
            load.cancel();
            QCOMPARE(load.result().errorCode(), int(ErrorCode::Cancelled));
        }
        QVERIFY(server.raw().awaitRequests(Slots + 1)); // The first waiting job gets the slot of the active one.
        server.open(Slots + 2);
        QCOMPARE(loads[Slots].result().status, 200);
        QCOMPARE(loads[Slots + 2].result().status, 200);
        for (const QByteArray &request : server.raw().requests())
            QVERIFY(!request.startsWith("GET /7 "));
    }

    void slowCompletionStallsNoTransfer()
    {
        RawServer server(always(httpAnswer("{}")));
        std::binary_semaphore hasBegun(0);
        std::binary_semaphore mayReturn(0);
        const auto slow = [&](auto &&...) {
            hasBegun.release();
            mayReturn.acquire();
        };
        Session::dataTask(httpGet(server.url()), slow)->resume();
        QVERIFY(hasBegun.try_acquire_for(std::chrono::seconds(10)));
        auto loads = resumed(3 * Slots, server.url());
        QVERIFY(server.awaitRequests(1 + 3 * Slots));
        for (const HttpLoad &load : loads)
            QVERIFY(!load.isFinished());
        mayReturn.release();
        QCOMPARE(loads.back().result().status, 200);
    }
};

QTEST_APPLESS_MAIN(tst_SessionTasks)
#include "tst_SessionTasks.moc"
