#include "ControllerSession.h"
#include "Front.h"
#include "Routes.h"
#include <ZelvanoUI/ZVListView.h>

#include <QCryptographicHash>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

/// A forward proxy for this process.
class Proxy
{
public:
    Proxy()
    {
        for (const char *variable : variables)
            qputenv(variable, "http://127.0.0.1:" + QByteArray::number(m_port));
    }
    ~Proxy()
    {
        for (const char *variable : variables)
            qunsetenv(variable);
        m_tinyproxy.terminate();
        m_tinyproxy.waitForFinished(10000);
    }
    Q_DISABLE_COPY_MOVE(Proxy)

    bool start()
    {
        QFile file(m_folder.filePath(u"tinyproxy.conf"_s));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write("Listen 127.0.0.1\nAllow 127.0.0.1\nTimeout 60\nMaxClients 100\nPort " + QByteArray::number(m_port));
        file.close();
        m_tinyproxy.setProcessChannelMode(QProcess::MergedChannels);
        m_tinyproxy.start(u"tinyproxy"_s, {u"-d"_s, u"-c"_s, file.fileName()});
        return waitUntil([this] { return log().contains("Accepting connections"); });
    }
    QByteArray log()
    {
        m_tinyproxy.waitForReadyRead(0);
        return m_log += m_tinyproxy.readAll();
    }

private:
    static constexpr const char *variables[] = {"http_proxy", "https_proxy"};
    /// tinyproxy takes no "any port": this one was free a moment ago.
    const int m_port = RawServer(silence()).url().port();
    const QTemporaryDir m_folder;
    QProcess m_tinyproxy;
    QByteArray m_log;
};

/// An identity's session over a front end: a page, an overlay and a list with thumbnails.
struct FrontSession : ControllerSession
{
    explicit FrontSession(const TestAuthority &authority, int requestsPerConnection = 1000)
        : front(service.sandbox, authority, requestsPerConnection)
    {
        TestAuthority::trusted = authority.file();
        if (!front.start() || !window->appear())
            qFatal("no front end");
        controller.reset();
        service.settle();
        direct = service.sent().size();
        useService(QString::fromLatin1(front.plain()));
        http::Routes::set(upgraded, front.secure());
        begin();
        list->view()->setParentItem(window->contentItem());
        list->view()->setSize({300, 600});
        controller->setRecommendationView(list);
        controller->setPlayer(std::make_shared<QObject>(), u"page"_s);
        service.settle();
        engine()->readyEvent(subscriber);
    }
    ~FrontSession()
    {
        controller.reset();
        ZVAPIObject::stopAllSessions();
        http::Routes::set(upgraded, {});
        TestAuthority::trusted.clear();
    }
    Q_DISABLE_COPY_MOVE(FrontSession)

    /// The page has said that it is ready, and the list has its pictures.
    bool isShown()
    {
        return waitUntil([&] {
            const auto images = ZVImagesFetcher::cachedImages();
            return overlay() && overlay()->isReady() && images.contains(front.url(u"thumbnails/2.jpg"_s).toString());
        });
    }
    void report(const QString &event, int times)
    {
        for (int i = 0; i < times; ++i)
            engine()->playerEvent(event, subscriber);
        service.settle();
    }
    QStringList sent() const { return sorted(service.sent().sliced(direct)); }
    /// The calls that reached the service through the front end.
    QStringList arrived() const
    {
        QStringList names;
        for (const auto &request : service.sandbox.requests())
            names.append(callName(request.path, request.body));
        return sorted(names.sliced(direct));
    }
    /// With several connections, calls may arrive in another order.
    static QStringList sorted(QStringList names)
    {
        names.sort();
        return names;
    }

    static inline const QByteArray upgraded = QUrl(API_URL_PROD).host().toLatin1() + ":443";
    Front front;
    qsizetype direct = 0; ///< The number of calls before.
    const std::shared_ptr<ZVRecommendationView> list = ZVListView::create();
};

} // namespace

/// The library over https behind nginx, as in production.
class tst_Front : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const auto &program : {u"/usr/sbin/nginx"_s, u"/usr/bin/tinyproxy"_s}) {
            if (!QFile::exists(program))
                QSKIP(qPrintable(program + " is missing: scripts/setup.sh front installs it"_L1));
        }
    }

    /// Each call arrives once, also when nginx ends connections by its limit or for a new configuration.
    void session()
    {
        for (const int requestsPerConnection : {1000, 3}) {
            const Case current(QByteArray::number(requestsPerConnection));
            FrontSession session(*authority, requestsPerConnection);
            QVERIFY2(session.isShown(), qPrintable(session.front.requests().join(u'\n')));
            session.report(u"seek"_s, 30);
            session.front.reload();
            session.report(u"pause"_s, 30);
            QCOMPARE(session.arrived(), session.sent());
        }
    }

    /// The calls of that time are lost, the next ones arrive.
    void serviceIsAway()
    {
        FrontSession session(*authority);
        QVERIFY(session.isShown());
        const auto port = session.service.sandbox.port();
        session.service.sandbox.stop();
        session.report(u"seek"_s, 10);
        QCOMPARE(session.front.requests().filter(u"/events 502"_s).size(), 10);
        QVERIFY(session.service.sandbox.start(port));
        session.report(u"pause"_s, 10);
        QCOMPARE(session.arrived().count(u"seek"_s), 0);
        QCOMPARE(session.arrived().count(u"pause"_s), 10);
    }

    void throughAProxy()
    {
        Proxy proxy;
        QVERIFY(proxy.start());
        FrontSession session(*authority);
        QVERIFY(session.isShown());
        session.report(u"seek"_s, 10);
        QCOMPARE(session.arrived(), session.sent());
        QVERIFY(proxy.log().contains("CONNECT localhost:"));
    }

    /// A connection costs a round trip of TCP, which the relay does not see, and one of TLS. The certificate is sent
    /// once.
    void roundTrips()
    {
        TestAuthority::trusted = authority->file();
        const auto certificate = authority->run(u"x509 -in cert.pem -outform der"_s);
        sandbox::Sandbox service;
        QVERIFY(service.start());
        for (const long version : {CURL_HTTP_VERSION_1_1, CURL_HTTP_VERSION_2TLS}) {
            TestAuthority::httpVersion = version;
            Front front(service, *authority, 2);
            QVERIFY(front.start());
            std::vector<Front::Carried> fresh, reused; // Of the first and the second request of each connection.
            for (std::size_t connection = 1; connection <= 5; ++connection) {
                for (auto *carried : {&fresh, &reused}) {
                    QCOMPARE(HttpLoad(httpPost(front.url(u"keepalive"_s), "{}")).resume().result().status, 200);
                    carried->push_back(front.connections().back());
                }
                QCOMPARE(front.connections().size(), connection);
                reused.back() = reused.back() - fresh.back();
            }
            // What crosses on the way can look like another round trip, so the best connection counts.
            const auto best = [](const auto &all) { return std::ranges::min(all, {}, &Front::Carried::roundTrips); };
            for (const auto &of : {fresh.front(), fresh.back(), best(reused)})
                qInfo("version %ld: %d round trips, %lld bytes up, %lld down", version, of.roundTrips, of.up, of.down);
            QCOMPARE(best(reused).roundTrips, 1);
            // nginx resumes no session of HTTP/2 here, and its first flights may overlap.
            if (version == CURL_HTTP_VERSION_1_1) {
                QCOMPARE(best(fresh).roundTrips, 2);
                QVERIFY(fresh.back().down < fresh.front().down - certificate.size());
            }
        }
        TestAuthority::httpVersion = 0;
        TestAuthority::trusted.clear();
    }

public:
    static inline const TestAuthority *authority = nullptr;
};

int main(int argc, char **argv)
{
    const TestAuthority authority(u"DNS:localhost,DNS:"_s + QUrl(API_URL_PROD).host());
    tst_Front::authority = &authority;
    // Chromium trusts this one key, beside the system's authorities.
    authority.run(u"x509 -in cert.pem -pubkey -noout -out public.pem"_s);
    const auto key = authority.run(u"pkey -pubin -in public.pem -outform der"_s);
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--ignore-certificate-errors-spki-list=" +
                                              QCryptographicHash::hash(key, QCryptographicHash::Sha256).toBase64());
    return runUiTest<tst_Front>(argc, argv);
}

#include "tst_Front.moc"
