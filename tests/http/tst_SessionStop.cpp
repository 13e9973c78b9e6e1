#include "HttpLoad.h"
#include "ImagesCache.h"
#include "Pictures.h"
#include <ZelvanoUI/ZVImagesFetcher.h>

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>

#include <semaphore>

#include <dlfcn.h>
#include <netdb.h>
#include <stdio.h>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;
using namespace zelvano::http;

namespace {

std::counting_semaphore<> resolverIsStuck(0);
std::counting_semaphore<> resolverMayGo(0);
std::atomic<int> attempts = 0;
const char *const Dead = "127.0.0.2";

} // namespace

/// Counts the attempts to connect.
extern "C" Q_DECL_EXPORT int connect(int socket, const sockaddr *address, socklen_t size)
{
    ++attempts;
    static const auto next = reinterpret_cast<decltype(&connect)>(dlsym(RTLD_NEXT, "connect"));
    return next(socket, address, size);
}

/// Replaces the system's resolver. Hangs on one name, and knows one with a dead first address.
extern "C" Q_DECL_EXPORT int getaddrinfo(const char *name, const char *service, const addrinfo *hints,
                                         addrinfo **result)
{
    if (name && qstrcmp(name, "stuck.test") == 0) {
        resolverIsStuck.release();
        resolverMayGo.acquire();
        return EAI_FAIL;
    }
    static const auto next = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!name || qstrcmp(name, "dead-first.test") != 0)
        return next(name, service, hints, result);
    const int code = next(Dead, service, hints, result);
    return code == 0 ? next("127.0.0.1", service, hints, &(*result)->ai_next) : code;
}

namespace {

/// An address and port that answer no attempt to connect: the listener's queue is full and the kernel drops the rest.
class DeadAddress
{
public:
    explicit DeadAddress(int port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(quint16(port));
        inet_pton(AF_INET, Dead, &address.sin_addr);
        const auto *const generic = reinterpret_cast<sockaddr *>(&address);
        if (bind(m_sockets[0], generic, sizeof(address)) != 0 || listen(m_sockets[0], 0) != 0)
            qFatal("DeadAddress: the port is taken");
        for (size_t i = 1; i < m_sockets.size(); ++i)
            (void)connect(m_sockets[i], generic, sizeof(address));
    }
    ~DeadAddress()
    {
        for (const int socket : m_sockets)
            close(socket);
    }
    Q_DISABLE_COPY_MOVE(DeadAddress)

private:
    static int open() { return socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0); }
    const std::array<int, 4> m_sockets{open(), open(), open(), open()};
};

/// What this program prints when it runs with this option and URL. Null if it fails.
QByteArray printedBy(const QByteArray &option, const QUrl &url)
{
    const QByteArray self = QFile::symLinkTarget(u"/proc/self/exe"_s).toLocal8Bit();
    FILE *const child = popen(("'" + self + "' " + option + ' ' + url.toEncoded()).constData(), "r");
    if (!child)
        return {};
    std::array<char, 8> text;
    const auto size = fread(text.data(), 1, text.size(), child);
    return pclose(child) == 0 ? QByteArray(text.data(), qsizetype(size)) : QByteArray();
}

} // namespace

/// A task can be cancelled at any moment. The threads end promptly whatever the network does, run every completion
/// first, and can start again.
class tst_SessionStop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void cancelBeforeResume()
    {
        RawServer server(always(httpAnswer("{}")));
        HttpLoad load(httpGet(server.url()));
        load.cancel();
        passCompletions();
        QVERIFY(load.runs() == 0 && !load.isFinished());
        load.resume().resume();
        QCOMPARE(load.result().errorCode(), int(ErrorCode::Cancelled));
        QVERIFY(load.isFinished());
        passCompletions();
        QCOMPARE(load.runs(), 1);
        QCOMPARE(server.accepted(), 0);
    }

    void cancelRacesFinish()
    {
        RawServer server(always(httpAnswer("{}")));
        std::vector<HttpLoad> loads;
        for (int i = 0; i < 1000; ++i)
            loads.emplace_back(httpGet(server.url()));
        // Each cancel comes shortly before, during or after the end of its transfer.
        constexpr size_t Ahead = 8;
        std::thread canceller([&loads] {
            for (size_t i = 0; i < loads.size(); ++i) {
                while (i >= Ahead && !loads[i - Ahead].isFinished())
                    std::this_thread::yield();
                loads[i].cancel();
            }
        });
        for (HttpLoad &load : loads)
            load.resume();
        canceller.join();
        for (HttpLoad &load : loads)
            QVERIFY(load.result().status == 200 || load.result().errorCode() == int(ErrorCode::Cancelled));
        passCompletions();
        for (HttpLoad &load : loads)
            QCOMPARE(load.runs(), 1);
    }

    void stopsWithTheApplication_data() { addBadNetworks(); }
    void stopsWithTheApplication()
    {
        QFETCH(const RawServer::Script, script);
        QFETCH(const bool, isSecure);
        RawServer server(script);
        int count = 0;
        auto app = std::make_unique<QCoreApplication>(count, nullptr);
        auto loads = resumed(3 * 6, server.url("/", isSecure));
        QVERIFY(server.awaitConnections(6));
        const auto start = std::chrono::steady_clock::now();
        app.reset();
        QVERIFY(std::chrono::steady_clock::now() - start < 500ms);
        for (HttpLoad &load : loads) {
            QCOMPARE(load.runs(), 1);
            QCOMPARE(load.result().errorCode(), int(ErrorCode::Cancelled));
        }
    }

    void stuckResolver()
    {
        int count = 0;
        auto app = std::make_unique<QCoreApplication>(count, nullptr);
        const auto start = std::chrono::steady_clock::now();
        HttpLoad impatient(httpGet(QUrl(u"http://stuck.test/"_s), 100ms));
        QCOMPARE(impatient.resume().result().errorCode(), int(ErrorCode::TimedOut));
        QVERIFY(resolverIsStuck.try_acquire_for(10s));

        HttpLoad patient(httpGet(QUrl(u"http://stuck.test/"_s)));
        patient.resume();
        QVERIFY(resolverIsStuck.try_acquire_for(10s));
        app.reset();
        QCOMPARE(patient.runs(), 1);
        QCOMPARE(patient.result().errorCode(), int(ErrorCode::Cancelled));
        // Nothing above waited for the resolver.
        resolverMayGo.release(2);
        QVERIFY(std::chrono::steady_clock::now() - start < 2s);
    }

    /// Each address of a name gets a few seconds. A single one is tried until the request's timeout.
    void deadFirstAddress()
    {
        RawServer server(always(httpAnswer("{}")));
        const DeadAddress dead(server.url().port());
        const auto load = [&](const char *host, auto timeout) {
            auto url = server.url();
            url.setHost(QString::fromLatin1(host));
            return HttpLoad(httpGet(url, timeout));
        };
        HttpLoad alone = load(Dead, 6s), second = load("dead-first.test", 20s);
        alone.resume();
        QCOMPARE(second.resume().result().status, 200);
        QVERIFY(!alone.isFinished());
        QCOMPARE(alone.result().errorCode(), int(ErrorCode::TimedOut));
        QCOMPARE(server.requests().size(), 1u);
    }

    /// Only an address that never answers is tried again.
    void refusedConnection()
    {
        const QUrl closed = RawServer(silence()).url();
        attempts = 0;
        QCOMPARE(HttpLoad(httpGet(closed)).resume().result().errorCode(), int(ErrorCode::CannotConnect));
        QCOMPARE(attempts, 1);
    }

    void resumeWhileStopping()
    {
        RawServer quiet(silence());
        RawServer server(always(httpAnswer("{}")));
        int count = 0;
        auto app = std::make_unique<QCoreApplication>(count, nullptr);
        HttpLoad second(httpGet(server.url()));
        Session::dataTask(httpGet(quiet.url()), [&](auto &&...) { second.resume(); })->resume();
        QVERIFY(quiet.awaitRequests(1));
        app.reset();
        QCOMPARE(second.result().status, 200);
    }

    void endsWithoutApplication()
    {
        for (const bool isSecure : {false, true}) {
            RawServer quiet(silence());
            QCOMPARE(printedBy("--child", quiet.url("/", isSecure)), QByteArray::number(int(ErrorCode::Cancelled)));
        }
    }

    /// A download may end after the decoding has stopped. It does not restart it, but another application object does.
    void lateDownload()
    {
        static std::atomic<int> decoded;
        const auto fetch = [] {
            ZVImagesFetcher::fetchImageInBackground(QUrl(u"http://late.test/"_s), [](auto &&...) { ++decoded; });
        };
        ImagesCache::shared().store(u"http://late.test/"_s, pictureFile({8, 8}));
        for (const int expected : {1, 2}) {
            int count = 0;
            auto app = std::make_unique<QCoreApplication>(count, nullptr);
            if (expected == 1)
                qAddPostRoutine(fetch); // Runs after those that are added later.
            fetch();
            QTRY_COMPARE(decoded, expected);
            app.reset();
            QTest::qSleep(100);
            QCOMPARE(decoded, expected);
        }
    }

    void noDescriptorAtTheFirstCall()
    {
        RawServer server(always(httpAnswer("{}")));
        QCOMPARE(printedBy("--no-descriptor", server.url()), QByteArray::number(int(ErrorCode::CannotConnect)) + '0');
    }
};

/// Prints the error code of a call without a free descriptor, then of one with descriptors.
static int callWithoutDescriptor(const char *url)
{
    alarm(15); // Ends a process that hangs.
    rlimit usual = {};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none = {0, usual.rlim_max};
    for (const rlimit &limit : {none, usual}) {
        setrlimit(RLIMIT_NOFILE, &limit);
        HttpLoad load(httpGet(QUrl::fromEncoded(url)));
        const auto result = load.resume().result(5s);
        putchar(load.isFinished() ? '0' + result.errorCode() : '-');
    }
    return 0;
}

/// Leaves main() during a transfer, without an application object.
static int runChild(const char *url)
{
    const auto print = [](const auto &, const auto &error) {
        const char digit = char('0' + (error ? error->code : 0));
        if (write(STDOUT_FILENO, &digit, 1) != 1)
            abort();
    };
    Session::dataTask(httpGet(QUrl::fromEncoded(url)), print)->resume();
    return 0;
}

int main(int count, char **arguments)
{
    if (count == 3 && qstrcmp(arguments[1], "--child") == 0)
        return runChild(arguments[2]);
    if (count == 3 && qstrcmp(arguments[1], "--no-descriptor") == 0)
        return callWithoutDescriptor(arguments[2]);
    tst_SessionStop test;
    return QTest::qExec(&test, count, arguments);
}

#include "tst_SessionStop.moc"
