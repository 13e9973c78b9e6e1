#include "Columns.h"
#include "JsonReading.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <limits>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_JsonReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values()
    {
        constexpr auto most = 9223372036854774784;
        const std::tuple<QByteArray, bool, qint64, double, bool> cases[] = {
            {"200", false, 200, 200, true},      {"-1.9", false, -1, -1.9, true},
            {"0", false, 0, 0, false},           {"0.5", false, 0, 0.5, true},
            {"1e300", false, most, 1e300, true}, {"-1e300", false, -most, -1e300, true},
            {"true", false, 1, 1, true},         {"null", false, 0, 0, false},
            {"[200]", false, 0, 0, false},       {"\"\"", true, 0, 0, false},
            {"\"200\"", true, 200, 200, true},   {"\" 30.5s\"", true, 30, 30.5, true},
            {"\"1e2e3\"", true, 100, 100, true}, {"\"1,5\"", true, 1, 1, true},
            {"\"true\"", true, 0, 0, true},      {"\"YES\"", true, 0, 0, true},
            {"\"no\"", true, 0, 0, false},       {"\"inf\"", true, 0, 0, false},
            {"\"-\"", true, 0, 0, false},        {"\"false\"", true, 0, 0, false},
        };
        for (const auto &[text, isText, integer, number, boolean] : cases) {
            const Case current(text);
            const auto value = QJsonDocument::fromJson('[' + text + ']').array().at(0);
            QCOMPARE(!json::stringValue(value).isNull(), isText);
            QCOMPARE(json::integerValue(value), integer);
            QCOMPARE(json::doubleValue(value), number);
            QCOMPARE(json::boolValue(value), boolean);
            QVERIFY(json::urlText(value).isNull() || value.isString());
        }
    }

    /// Plain URLs are told from their text. The answer is always that of QUrl's parser.
    void urls()
    {
        const auto hosts =
            u",a,a.example,a-1.b2.example,A.example,a..b,a.,-a,a-,a--b,xn--a,xn--,xn--mnchen-3ya,1.2.3.4,"
            "1.2.3.999,a:80,a:x,a:99999,u@a,a b,a_b,ä,[::1],[a,"_s +
            QString(64, u'a');
        for (const auto &scheme : {u""_s, u"http://"_s, u"https://"_s, u"HTTPS://"_s, u"ftp://"_s, u"http:/"_s}) {
            for (const auto &host : hosts.split(u',')) {
                for (const auto &rest : {u""_s, u"/"_s, u"/a_B-1.mp4?w=1&h=2"_s, u"//"_s, u"/ "_s, u"/%41"_s, u"/%"_s,
                                         u"/\""_s, u"/ä"_s, u"/\\"_s, u"/:"_s, u"?a"_s, u"#a"_s, u"/#"_s, u"/#[#"_s}) {
                    const auto text = scheme + host + rest;
                    const bool isValid = QUrl(text, QUrl::StrictMode).isValid();
                    QVERIFY2(json::urlText(text) == (isValid ? text : QString()), qPrintable(text));
                }
            }
        }
    }

    /// A text that is not quite a number takes no longer than reading it does: else the run does not end.
    void longTexts()
    {
        constexpr int size = 4000000;
        const auto digits = u"1"_s + QString(size, u'0') + u"e"_s;
        for (const auto &text : {QString(size, u'-'), digits, u"1e1"_s.repeated(size / 3)}) {
            QVERIFY(std::isfinite(json::doubleValue(text)));
            json::boolValue(text);
            json::urlText(text);
        }
    }

    void keyPaths()
    {
        const QJsonObject answer{
            {"status"_L1, 200}, {"data"_L1, QJsonObject{{"userId"_L1, "u"_L1}}}, {"list"_L1, QJsonArray{1}}};
        QCOMPARE(json::valueForKeyPath(answer, u"data.userId"), QJsonValue("u"_L1));
        QCOMPARE(json::valueForKeyPath(answer, u"status"), QJsonValue(200));
        for (const auto &path : {u"data.pageUUID"_s, u"datum.userId"_s, u"data.userId.x"_s, u"list.0"_s, u""_s, u"."_s})
            QVERIFY2(json::valueForKeyPath(answer, path).isUndefined(), qPrintable(path));
    }
};

QTEST_GUILESS_MAIN(tst_JsonReading)
#include "tst_JsonReading.moc"
