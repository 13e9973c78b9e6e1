#pragma once

#include <QByteArray>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdarg>

#include <curl/curl.h>
#include <dlfcn.h>

/// A certificate authority of the test's own, with a certificate for some names. Nothing trusts it but libcurl, and
/// only in this process and while `trusted` names its file.
class TestAuthority
{
public:
    /// `names` as openssl takes them, such as "DNS:localhost".
    explicit TestAuthority(const QString &names)
    {
        const QString key = QStringLiteral("-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -batch -days 2 ");
        run(QStringLiteral("req -x509 -subj /CN=authority -keyout ca.key -out ca.pem ") + key);
        run(QStringLiteral("req -x509 -subj /CN=service -CA ca.pem -CAkey ca.key -keyout key.pem -out cert.pem ") +
            key + QStringLiteral("-addext basicConstraints=critical,CA:FALSE -addext subjectAltName=") + names);
    }

    QString folder() const { return m_folder.path(); }
    QByteArray file() const { return m_folder.filePath(QStringLiteral("ca.pem")).toLocal8Bit(); }

    /// What openssl prints.
    QByteArray run(const QString &arguments) const
    {
        QProcess program;
        program.setWorkingDirectory(folder());
        program.start(QStringLiteral("openssl"), arguments.split(u' ', Qt::SkipEmptyParts));
        if (!program.waitForFinished(10000) || program.exitCode() != 0)
            qFatal("openssl: %s", program.readAllStandardError().constData());
        return program.readAllStandardOutput();
    }

    /// The file that libcurl trusts now; empty for the system's authorities.
    static inline QByteArray trusted;
    /// The version that libcurl speaks; 0 for the library's choice.
    static inline long httpVersion = 0;

private:
    const QTemporaryDir m_folder;
};

#undef curl_easy_setopt

/// Replaces libcurl's function: the library has no other way to trust an authority.
extern "C" Q_DECL_EXPORT CURLcode curl_easy_setopt(CURL *easy, CURLoption option, ...)
{
    using SetOption = CURLcode (*)(CURL *, CURLoption, ...);
    static const auto next = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
    va_list rest;
    va_start(rest, option);
    const auto value = va_arg(rest, void *); // All option values have the same width and passing convention.
    va_end(rest);
    if (option == CURLOPT_URL) {
        const char *authorities = nullptr;
        curl_easy_getinfo(easy, CURLINFO_CAINFO, &authorities);
        static const QByteArray own(authorities);
        const QByteArray &trusted = TestAuthority::trusted;
        next(easy, CURLOPT_CAINFO, trusted.isEmpty() ? own.constData() : trusted.constData());
    }
    if (option == CURLOPT_URL && TestAuthority::httpVersion != 0)
        next(easy, CURLOPT_HTTP_VERSION, TestAuthority::httpVersion);
    return next(easy, option, value);
}
