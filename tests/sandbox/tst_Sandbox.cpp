#include "Sandbox.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTest>
#include <QtEndian>

#include <mutex>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano::sandbox;
using Kind = Fault::Kind;

Q_DECLARE_METATYPE(Kind)

namespace {

struct Answer
{
    int status = 0; // 0: the connection was closed before the headers were complete
    QByteArray headers;
    QByteArray body;
    bool complete = false;

    QByteArray header(const QByteArray &name) const
    {
        for (const QByteArray &line : headers.split('\n')) {
            if (line.toLower().startsWith(name + ':'))
                return line.mid(name.size() + 1).trimmed();
        }
        return {};
    }
    QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
};

// One connection, and no HTTP library that could hide what is sent on it.
class Client
{
public:
    explicit Client(quint16 port, const char *address = "127.0.0.1") : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(port);
        ::inet_pton(AF_INET, address, &target.sin_addr);
        m_connected = ::connect(m_socket, reinterpret_cast<sockaddr *>(&target), sizeof target) == 0;
    }
    ~Client() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(Client)

    bool connected() const { return m_connected; }

    void send(const QByteArray &method, const QByteArray &path, const QByteArray &body = {},
              const QByteArray &headers = "x-api-key: key\r\n") const
    {
        const QByteArray text = method + ' ' + path + " HTTP/1.1\r\nHost: service.example:81\r\n" + headers +
                                "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        ::send(m_socket, text.constData(), static_cast<size_t>(text.size()), MSG_NOSIGNAL);
    }

    QByteArray receive(int timeoutMs = 5000) const
    {
        pollfd descriptor{m_socket, POLLIN, 0};
        if (::poll(&descriptor, 1, timeoutMs) <= 0)
            return {};
        QByteArray bytes(1 << 16, Qt::Uninitialized);
        const ssize_t count = ::recv(m_socket, bytes.data(), static_cast<size_t>(bytes.size()), 0);
        return count > 0 ? bytes.first(count) : QByteArray();
    }

    Answer answer(bool headersOnly = false) const
    {
        Answer result;
        QByteArray bytes;
        qsizetype split = -1;
        while ((split = bytes.indexOf("\r\n\r\n")) < 0) {
            const QByteArray more = receive();
            if (more.isEmpty())
                return result;
            bytes += more;
        }
        result.headers = bytes.first(split);
        result.body = bytes.sliced(split + 4);
        result.status = result.headers.split(' ').value(1).toInt();
        const qsizetype length = headersOnly ? 0 : result.header("content-length").toLongLong();
        while (result.body.size() < length) {
            const QByteArray more = receive();
            if (more.isEmpty())
                return result;
            result.body += more;
        }
        result.complete = true;
        return result;
    }

    Answer ask(const QByteArray &method, const QByteArray &path, const QByteArray &body = {},
               const QByteArray &headers = "x-api-key: key\r\n") const
    {
        send(method, path, body, headers);
        return answer(method == "HEAD");
    }

private:
    int m_socket;
    bool m_connected = false;
};

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray eventBody(const QString &type, const QJsonObject &more = {})
{
    QJsonObject body = more;
    body.insert(u"userId"_s, u"user"_s);
    body.insert(u"type"_s, type);
    return compact(body);
}

// The length that an MP4 file states of itself, in seconds.
double lengthOf(const QByteArray &movie)
{
    const qsizetype header = movie.indexOf("mvhd");
    if (header < 0)
        return 0;
    const char *fields = movie.constData() + header + 16;
    return double(qFromBigEndian<quint32>(fields + 4)) / qFromBigEndian<quint32>(fields);
}

} // namespace

class tst_Sandbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_sandbox.reset(); }

    void expiredChannel();
    void everyVideoIsServed();
    void pages_data();
    void pages();

    void faults_data();
    void faults();
    void cutWithinAnswer();
    void drip();

    void scenarios_data();
    void scenarios();
    void scenarioNames();
    void slow();
    void missingPictures();
    void titles();

    void range_data();
    void range();

    void oneWriteAnAnswer();
    void stopIsQuick_data();
    void stopIsQuick();
    void loopbackOnly();

private:
    Answer ask(const QByteArray &method, const QByteArray &path, const QByteArray &body = {},
               const QByteArray &headers = "x-api-key: key\r\n") const
    {
        return Client(m_sandbox->port()).ask(method, path, body, headers);
    }
    Answer post(const QByteArray &path, const QByteArray &body) const { return ask("POST", path, body); }
    void openChannel() const { post("/channels/init/zelvano", R"({"userId":"user"})"); }
    QJsonArray videos(const QJsonObject &request) const
    {
        return post("/events", eventBody(u"ready"_s, request)).json()["data"_L1]["videos"_L1].toArray();
    }

    std::unique_ptr<Sandbox> m_sandbox;
};

void tst_Sandbox::init()
{
    m_sandbox = std::make_unique<Sandbox>();
    QVERIFY(m_sandbox->start());
}

void tst_Sandbox::expiredChannel()
{
    const auto status = [this](const QString &type) {
        return post("/events", eventBody(type)).json()["status"_L1].toInt();
    };
    openChannel();
    m_sandbox->expireChannels();
    QCOMPARE(status(u"page"_s), 406);
    QCOMPARE(status(u"ready"_s), 406);
    QCOMPARE(status(u"play"_s), 200);
    openChannel();
    QCOMPARE(status(u"ready"_s), 200);
}

void tst_Sandbox::everyVideoIsServed()
{
    openChannel();
    const QJsonArray list = videos({{u"size"_s, 9}});
    QSet<QString> titles;
    for (const QJsonValue &video : list) {
        titles << video["title"_L1].toString();
        QVERIFY(
            QSet<QString>({u"FORYOU"_s, u"MOSTVIEWED"_s, u"MOSTRECENT"_s}).contains(video["category"_L1].toString()));
        QVERIFY(video["pubDate"_L1].isDouble() && video["value"_L1].isDouble());

        const Answer movie = ask("GET", QUrl(video["url"_L1].toString()).path().toUtf8());
        QCOMPARE(movie.header("content-type"), "video/mp4"_ba);
        QCOMPARE(lengthOf(movie.body), video["durationSec"_L1].toDouble());
        QVERIFY2(movie.body.indexOf("moov") < movie.body.indexOf("mdat"), "playable before it is complete");
        for (const auto image : {"imageUrl"_L1, "stripUrl"_L1}) {
            const Answer picture = ask("GET", QUrl(video[image].toString()).path().toUtf8());
            QCOMPARE(picture.header("content-type"), "image/jpeg"_ba);
            QVERIFY(picture.body.startsWith("\xff\xd8\xff"));
        }
    }
    QCOMPARE(titles.size(), 9);
}

void tst_Sandbox::pages_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("type");

    QTest::newRow("/layout/") << 200 << "text/html; charset=utf-8"_ba;
    QTest::newRow("/kaltura/?entryId=3&autoPlay=true") << 200 << "text/html; charset=utf-8"_ba;
    QTest::newRow("/kaltura/player.css") << 200 << "text/css; charset=utf-8"_ba;
    QTest::newRow("/kaltura/player.js") << 200 << "text/javascript; charset=utf-8"_ba;
    QTest::newRow("/kaltura/zelvano-plugin.js") << 200 << "text/javascript; charset=utf-8"_ba;
    QTest::newRow("/shared/clock.js") << 200 << "text/javascript; charset=utf-8"_ba;
    QTest::newRow("/kaltura/missing.js") << 404 << "text/plain"_ba;
    QTest::newRow("/kaltura/../layout/index.html") << 404 << "text/plain"_ba;
}

void tst_Sandbox::pages()
{
    QFETCH(int, status);
    QFETCH(QByteArray, type);

    const Answer page = ask("GET", QTest::currentDataTag());
    QCOMPARE(page.status, status);
    QCOMPARE(page.header("content-type"), type);
    QVERIFY(page.complete && !page.body.isEmpty());
}

void tst_Sandbox::faults_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<int>("httpStatus");
    QTest::addColumn<QByteArray>("body"); // null: not compared

    QTest::newRow("delay") << Kind::Delay << 200 << R"({"status":200})"_ba;
    QTest::newRow("HTTP status") << Kind::HttpStatus << 503 << R"({"status":200})"_ba;
    QTest::newRow("service status") << Kind::ServiceStatus << 200 << R"({"status":503})"_ba;
    QTest::newRow("body") << Kind::Body << 200 << "[1, 2"_ba;
    QTest::newRow("garbage") << Kind::Garbage << 200 << QByteArray();
    QTest::newRow("empty") << Kind::Empty << 200 << ""_ba;
    QTest::newRow("cut") << Kind::CutBeforeAnswer << 0 << ""_ba;
}

void tst_Sandbox::faults()
{
    QFETCH(Kind, kind);
    QFETCH(int, httpStatus);
    QFETCH(QByteArray, body);

    m_sandbox->addFault(u"keepalive"_s, {}, {.kind = kind, .status = 503, .delay = 60ms, .body = body});
    QElapsedTimer timer;
    timer.start();
    const Answer answer = post("/keepalive", "{}");
    QVERIFY(timer.elapsed() >= 60);
    QCOMPARE(answer.status, httpStatus);
    if (!body.isNull())
        QCOMPARE(answer.body, body);
    else
        QVERIFY(!answer.body.isEmpty() && QJsonDocument::fromJson(answer.body).isNull());
    QCOMPARE(m_sandbox->requests().back().httpStatus, httpStatus);
    QCOMPARE(m_sandbox->requests().back().serviceStatus, answer.json()["status"_L1].toInt());

    QCOMPARE(post("/keepalive", "{}").body, R"({"status":200})"_ba);
}

void tst_Sandbox::cutWithinAnswer()
{
    m_sandbox->addFault(u"/thumbnails/1.jpg"_s, {}, {.kind = Kind::CutWithinAnswer});
    const Answer cut = ask("GET", "/thumbnails/1.jpg");
    QCOMPARE(cut.status, 200);
    QVERIFY(!cut.complete);
    QVERIFY(!cut.body.isEmpty() && cut.body.size() < cut.header("content-length").toLongLong());
    QVERIFY(ask("GET", "/thumbnails/1.jpg").complete);
}

void tst_Sandbox::drip()
{
    m_sandbox->addFault(u"keepalive"_s, {}, {.kind = Kind::Drip, .delay = 5ms});
    const Client client(m_sandbox->port());
    client.send("POST", "/keepalive", "{}");
    QByteArray first = client.receive();
    QVERIFY2(!first.contains(R"({"status":200})"), "not all at once");
    QElapsedTimer timer;
    timer.start();
    while (!first.endsWith(R"({"status":200})")) {
        const QByteArray more = client.receive();
        QVERIFY(!more.isEmpty());
        first += more;
    }
    QVERIFY(timer.elapsed() >= 50);
}

void tst_Sandbox::scenarios_data()
{
    using Statuses = QList<int>;
    QTest::addColumn<Statuses>("statuses"); // Of the calls in scenarios(); 0: no JSON.
    QTest::addColumn<int>("videos");        // To the second ready event, which asks for 5; -1: none are told of.

    const Statuses well(8, 200);
    QTest::newRow("ordinary") << well << 5;
    QTest::newRow("empty") << well << 0;
    QTest::newRow("one-video") << well << 1;
    QTest::newRow("thousand-videos") << well << 1000;
    QTest::newRow("error-statuses") << Statuses{503, 500, 404, 404, 404, 404, 404, 401} << -1;
    QTest::newRow("channel-lost") << Statuses{200, 200, 406, 200, 406, 200, 200, 200} << 5;
    QTest::newRow("garbage") << Statuses(8, 0) << -1;
    QTest::newRow("missing-pictures") << well << 5;
    QTest::newRow("long-titles") << well << 5;
    QTest::newRow("right-to-left-titles") << well << 5;
}

void tst_Sandbox::scenarios()
{
    QFETCH(QList<int>, statuses);
    QFETCH(int, videos);

    // What the scenario before left behind is gone.
    m_sandbox->setScenario(Scenario::Garbage);
    m_sandbox->setScenario(*Sandbox::scenarioByName(QString::fromLatin1(QTest::currentDataTag())));
    QList<int> answered;
    const auto call = [&](const QByteArray &path, const QByteArray &body) {
        const QJsonObject answer = post(path, body).json();
        answered.append(answer["status"_L1].toInt());
        return answer;
    };
    call("/users/id", "{}");
    call("/channels/init/zelvano", R"({"userId":"user"})");
    call("/events", eventBody(u"page"_s));
    call("/events", eventBody(u"page"_s));
    call("/events", eventBody(u"ready"_s));
    const QJsonValue list = call("/events", eventBody(u"ready"_s, {{u"size"_s, 5}}))["data"_L1]["videos"_L1];
    call("/events", eventBody(u"play"_s));
    call("/keepalive", "{}");
    QCOMPARE(answered, statuses);
    QCOMPARE(list.isArray() ? static_cast<int>(list.toArray().size()) : -1, videos);
    QCOMPARE(ask("GET", "/media/1.mp4").status, 200);
}

void tst_Sandbox::scenarioNames()
{
    const QStringList names = Sandbox::scenarioNames();
    for (qsizetype number = 0; number < names.size(); ++number)
        QCOMPARE(Sandbox::scenarioByName(names[number]), static_cast<Scenario>(number));
    QCOMPARE(names.size(), static_cast<qsizetype>(Scenario::RightToLeftTitles) + 1);
    QVERIFY(!Sandbox::scenarioByName(u"Ordinary"_s));
}

void tst_Sandbox::slow()
{
    m_sandbox->setScenario(Scenario::Slow);
    const std::vector<QByteArray> paths{"/users/id", "/events", "/thumbnails/1.jpg", "/strips/9.jpg"};
    std::vector<std::unique_ptr<Client>> clients;
    QElapsedTimer timer;
    timer.start();
    for (const QByteArray &path : paths) {
        clients.push_back(std::make_unique<Client>(m_sandbox->port()));
        clients.back()->send("POST", path, "{}");
    }
    QCOMPARE(ask("GET", "/layout/").status, 200);
    QVERIFY2(timer.elapsed() < 1000, "the layout page is not slow");
    for (const auto &client : clients) {
        QCOMPARE(client->answer().status, 200);
        QVERIFY(timer.elapsed() >= 1000);
    }
}

void tst_Sandbox::missingPictures()
{
    m_sandbox->setScenario(Scenario::MissingPictures);
    openChannel();
    QMap<int, int> statuses; // 0: no address
    for (const QJsonValue &video : videos({{u"size"_s, 8}})) {
        const auto path = QUrl(video["imageUrl"_L1].toString()).path().toUtf8();
        ++statuses[path.isEmpty() ? 0 : ask("GET", path).status];
    }
    QCOMPARE(statuses, (QMap<int, int>{{0, 4}, {200, 2}, {404, 2}}));
}

void tst_Sandbox::titles()
{
    m_sandbox->setScenario(Scenario::LongTitles);
    openChannel();
    for (const QJsonValue &video : videos({{u"size"_s, 8}}))
        QVERIFY(video["title"_L1].toString().size() > 70);
    m_sandbox->setScenario(Scenario::RightToLeftTitles);
    for (const QJsonValue &video : videos({{u"size"_s, 8}}))
        QVERIFY(video["title"_L1].toString().isRightToLeft());
}

void tst_Sandbox::range_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("range");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("from");   // -1: from the end
    QTest::addColumn<int>("length"); // -1: everything

    QTest::newRow("none") << "GET"_ba
                          << ""_ba << 200 << 0 << -1;
    QTest::newRow("start") << "GET"_ba
                           << "bytes=0-99"_ba << 206 << 0 << 100;
    QTest::newRow("middle") << "GET"_ba
                            << "bytes=1000-1000"_ba << 206 << 1000 << 1;
    QTest::newRow("last bytes") << "GET"_ba
                                << "bytes=-50"_ba << 206 << -1 << 50;
    QTest::newRow("beyond the end") << "GET"_ba
                                    << "bytes=99999999-"_ba << 416 << 0 << 0;
    QTest::newRow("headers only") << "HEAD"_ba
                                  << ""_ba << 200 << 0 << 0;
}

void tst_Sandbox::range()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, range);
    QFETCH(int, status);
    QFETCH(int, from);
    QFETCH(int, length);

    const QByteArray whole = ask("GET", "/media/1.mp4").body;
    const Client client(m_sandbox->port());
    const Answer part = client.ask(method, "/media/1.mp4", {}, range.isEmpty() ? ""_ba : "Range: " + range + "\r\n");
    QCOMPARE(part.status, status);
    QCOMPARE(part.header("accept-ranges"), "bytes"_ba);
    QVERIFY(part.body == (from < 0 ? whole.last(length) : whole.mid(from, length)));
    if (method == "HEAD")
        QCOMPARE(part.header("content-length").toLongLong(), whole.size());
    QVERIFY2(client.ask("GET", "/test/echo").complete, "nothing is left over on the connection");
}

void tst_Sandbox::oneWriteAnAnswer()
{
    const Client client(m_sandbox->port());
    for (int round = 0; round < 200; ++round) {
        client.send("POST", "/keepalive", "{}");
        QVERIFY(client.receive().endsWith(R"({"status":200})"));
    }
}

void tst_Sandbox::stopIsQuick_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("delay") << Kind::Delay;
    QTest::newRow("silence") << Kind::Silence;
    QTest::newRow("drip") << Kind::Drip;
}

void tst_Sandbox::stopIsQuick()
{
    QFETCH(Kind, kind);

    m_sandbox->addFault(u"keepalive"_s, {}, {.kind = kind, .delay = kind == Kind::Silence ? 0ms : 60000ms});
    const quint16 port = m_sandbox->port();
    const Client idle(port);
    const Client waiting(port);
    waiting.send("POST", "/keepalive", "{}");
    QTRY_COMPARE(m_sandbox->requests().size(), size_t(1));
    QVERIFY2(waiting.receive(30).isEmpty(), "held back");

    QElapsedTimer timer;
    timer.start();
    m_sandbox->stop();
    QVERIFY(timer.elapsed() < 1000);
    QCOMPARE(waiting.answer().status, 0);

    QVERIFY2(m_sandbox->start(port), "the port is free again");
    QCOMPARE(post("/keepalive", "{}").status, 200);
}

// A server on all addresses would answer here, too.
void tst_Sandbox::loopbackOnly()
{
    QVERIFY(Client(m_sandbox->port()).connected());
    QVERIFY(!Client(m_sandbox->port(), "127.0.0.2").connected());
}

QTEST_GUILESS_MAIN(tst_Sandbox)
#include "tst_Sandbox.moc"
