#include "EngineFixture.h"
#include "UrlLoad.h"

#include <QProcess>
#include <QRegularExpression>

#include <cstdarg>

#include <curl/curl.h>
#include <dlfcn.h>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

/// A certificate that the library is made to trust; empty: the system's alone.
QByteArray trusted;

} // namespace

#undef curl_easy_setopt

/// In place of libcurl's: nothing else could make the library trust a certificate of the test's own.
extern "C" Q_DECL_EXPORT CURLcode curl_easy_setopt(CURL *easy, CURLoption option, ...)
{
    using SetOption = CURLcode (*)(CURL *, CURLoption, ...);
    static const auto next = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
    va_list rest;
    va_start(rest, option);
    const auto value = va_arg(rest, void *); // All options' values are passed alike, and are as wide.
    va_end(rest);
    if (option == CURLOPT_URL) {
        const char *authorities = nullptr;
        curl_easy_getinfo(easy, CURLINFO_CAINFO, &authorities);
        static const QByteArray own(authorities);
        next(easy, CURLOPT_CAINFO, trusted.isEmpty() ? own.constData() : trusted.constData());
    }
    return next(easy, option, value);
}

/// What others may want of the library.
class tst_Security : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void cleanup() { trusted.clear(); }
    void certificates_data();
    void certificates();
    void secureRedirects_data();
    void secureRedirects();
    void headerInjection();

private:
    bool start(QProcess &server);
    void serve(const QByteArray &name, const QByteArray &answer) const;

    const QTemporaryDir m_folder;
    int m_port = 0;
};

void tst_Security::initTestCase()
{
    QProcess program;
    program.start(u"openssl"_s,
                  {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s, u"ec_paramgen_curve:P-256"_s,
                   u"-nodes"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=localhost"_s, u"-addext"_s,
                   u"subjectAltName=DNS:localhost"_s, u"-keyout"_s, m_folder.filePath(u"key.pem"_s), u"-out"_s,
                   m_folder.filePath(u"cert.pem"_s), u"-batch"_s});
    QVERIFY(program.waitForFinished(10000));
    QCOMPARE(program.exitCode(), 0);
}

/// A TLS server on a free port that says what the files of the folder say.
bool tst_Security::start(QProcess &server)
{
    server.setWorkingDirectory(m_folder.path());
    server.start(u"openssl"_s, {u"s_server"_s, u"-accept"_s, u"127.0.0.1:0"_s, u"-cert"_s, u"cert.pem"_s, u"-key"_s,
                                u"key.pem"_s, u"-HTTP"_s});
    QByteArray said;
    while (!said.contains("ACCEPT") && server.waitForReadyRead(10000))
        said += server.readAllStandardOutput();
    const auto found = QRegularExpression(u"ACCEPT \\S*:(\\d+)"_s).match(QString::fromLatin1(said));
    m_port = found.captured(1).toInt();
    return m_port > 0;
}

void tst_Security::serve(const QByteArray &name, const QByteArray &answer) const
{
    QFile file(m_folder.filePath(QString::fromLatin1(name)));
    file.open(QIODevice::WriteOnly);
    file.write(answer);
}

void tst_Security::certificates_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("isTrusted");
    QTest::addColumn<int>("error");
    QTest::newRow("trusted") << u"localhost"_s << true << 0;
    QTest::newRow("unknown") << u"localhost"_s << false << int(UrlError::SecureConnectionFailed);
    QTest::newRow("of another host") << u"127.0.0.1"_s << true << int(UrlError::SecureConnectionFailed);
}

void tst_Security::certificates()
{
    QFETCH(QString, host);
    QFETCH(bool, isTrusted);
    QFETCH(int, error);
    QProcess server;
    QVERIFY(start(server));
    serve("answer", httpAnswer("{}"));
    if (isTrusted)
        trusted = m_folder.filePath(u"cert.pem"_s).toUtf8();
    const QUrl url(u"https://%1:%2/answer"_s.arg(host).arg(m_port));
    QCOMPARE(UrlLoad(urlGet(url)).resume().result().errorCode(), error);
    server.kill();
    server.waitForFinished();
}

void tst_Security::secureRedirects_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<int>("error");
    QTest::newRow("to https") << QByteArray("/answer") << 0;
    QTest::newRow("to http") << QByteArray("http://") << int(UrlError::BadAnswer);
    QTest::newRow("to a file") << QByteArray("file:///etc/hostname") << int(UrlError::BadAnswer);
}

void tst_Security::secureRedirects()
{
    QFETCH(QByteArray, target);
    QFETCH(int, error);
    RawServer plain(always(httpAnswer("{}")));
    QProcess server;
    QVERIFY(start(server));
    trusted = m_folder.filePath(u"cert.pem"_s).toUtf8();
    serve("answer", httpAnswer("{}"));
    const auto location = target == "http://" ? plain.url("/answer").toEncoded() : target;
    serve("moved", httpRedirect("302", location + "\r\nConnection: close"));
    auto request = urlGet(QUrl(u"https://localhost:%1/moved"_s.arg(m_port)));
    request.setHeader("x-api-key", "secret");
    QCOMPARE(UrlLoad(request).resume().result().errorCode(), error);
    QCOMPARE(plain.accepted(), 0);
    server.kill();
    server.waitForFinished();
}

/// Key, page and ids come from the host, the service and the player; none of them leaves its place.
void tst_Security::headerInjection()
{
    EngineFixture service;
    const auto evil = u"v\r\nX-Evil: 1\r\n\r\nGET /keepalive HTTP/1.1\r\n"_s;
    service.answer(ZVRetrieveUserIdAPI,
                   R"({"status":200,"data":{"userId":"u\r\nX-Evil: 1","userUUID":"w\r\nX-Evil: 1"}})");
    service.engine->initializeWithAPIKey(u"key"_s);
    service.settle();
    service.engine->setPlayer(nullptr, evil);
    service.settle();
    service.subscriber->video = evil;
    service.subscriber->kind = evil;
    service.engine->readyEvent(service.subscriber);
    service.settle();
    service.engine->playerEvent(evil, service.subscriber);
    service.settle();
    QCOMPARE(service.arrived(ZVPageEvent).body.value("pageUrl"_L1).toString(), evil);
    QCOMPARE(service.arrived(ZVReadyEvent).body.value("videoId"_L1).toString(), evil);
    QCOMPARE(service.arrived(evil).body.value("type"_L1).toString(), evil);
    service.engine->initializeWithAPIKey(evil);
    service.settle();
    const auto requests = service.sandbox.requests();
    QCOMPARE(requests.size(), std::size_t(service.sent().size()));
    for (const auto &request : requests)
        QVERIFY(request.headers.count("x-evil") == 0 && request.headers.count("x-user-uuid") == 0);
    QVERIFY(requests.back().headers.count("x-api-key") == 0); // Left out as a whole.
}

QTEST_GUILESS_MAIN(tst_Security)
#include "tst_Security.moc"
