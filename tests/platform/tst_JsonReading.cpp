#include "Columns.h"
#include "JsonReading.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_JsonReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        constexpr auto most = 9223372036854774784;
        addColumns<QByteArray, bool, qint64, double, bool>({"json", "isText", "integer", "number", "boolean"});
        const auto row = [](const char *json, bool isText, qint64 integer, double number, bool boolean) {
            QTest::newRow(json) << QByteArray(json) << isText << integer << number << boolean;
        };
        row("200", false, 200, 200, true);
        row("-1.9", false, -1, -1.9, true);
        row("0", false, 0, 0, false);
        row("0.5", false, 0, 0.5, true);
        row("1e300", false, most, 1e300, true);
        row("-1e300", false, -most, -1e300, true);
        row("true", false, 1, 1, true);
        row("false", false, 0, 0, false);
        row("null", false, 0, 0, false);
        row("[200]", false, 0, 0, false);
        row("{\"a\":1}", false, 0, 0, false);
        row("\"\"", true, 0, 0, false);
        row("\"200\"", true, 200, 200, true);
        row("\" 30.5s\"", true, 30, 30.5, true);
        row("\"1e2e3\"", true, 100, 100, true);
        row("\"1,5\"", true, 1, 1, true);
        row("\"0\"", true, 0, 0, false);
        row("\"true\"", true, 0, 0, true);
        row("\"YES\"", true, 0, 0, true);
        row("\"no\"", true, 0, 0, false);
        row("\"false\"", true, 0, 0, false);
        row("\"inf\"", true, 0, 0, false);
        row("\"nan\"", true, 0, 0, false);
        row("\"-\"", true, 0, 0, false);
    }

    void values()
    {
        QFETCH(QByteArray, json);
        const auto value = QJsonDocument::fromJson('[' + json + ']').array().at(0);
        QTEST(!json::stringValue(value).isNull(), "isText");
        QTEST(json::integerValue(value), "integer");
        QTEST(json::doubleValue(value), "number");
        QTEST(json::boolValue(value), "boolean");
        QVERIFY(!json::urlValue(value).isValid() || value.isString());
    }

    /// A text that is not quite a number takes no longer than reading it does: else the run does not end.
    void longTexts()
    {
        constexpr int size = 4000000;
        const auto digits = u"1"_s + QString(size, u'0') + u"e"_s;
        for (const auto &text : {QString(size, u'-'), digits, u"1e1"_s.repeated(size / 3)}) {
            QVERIFY(std::isfinite(json::doubleValue(text)));
            json::boolValue(text);
            json::urlValue(text);
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
