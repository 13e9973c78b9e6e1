#include "ConfigAccess.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_ZVConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZVConfigTestAccess::reset(); }
    void answers_data();
    void answers();
    void firstIntervalStays();

private:
    static void configure(const QByteArray &json)
    {
        ZVConfig::shared().setParams(QJsonDocument::fromJson(json).object());
    }
};

void tst_ZVConfig::answers_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("show");
    QTest::addColumn<QUrl>("page");
    QTest::addColumn<double>("interval");
    QTest::addColumn<QString>("api");
    const auto row = [](const char *json, bool show, const QString &page, double interval, const QString &api) {
        QTest::newRow(json) << QByteArray(json) << show << QUrl(page) << interval << api;
    };
    row("", false, {}, 0, {});
    row(R"({"sdkConfig":{"showUI":true,"keepALiveInterval":30000,"apiUrl":"a"},"uiTagUrls":["http://p/","x"]})", true,
        u"http://p/"_s, 30, u"a"_s);
    row(R"({"sdkConfig":{"showUI":"true","keepALiveInterval":"1500","apiUrl":""}})", true, {}, 1.5, u""_s);
    row(R"({"sdkConfig":{"showUI":"NO","keepALiveInterval":[1]},"uiTagUrls":[]})", false, {}, 0, {});
    row(R"({"sdkConfig":{"showUI":1,"keepALiveInterval":true},"uiTagUrls":"http://p/"})", true, {}, 0.001, {});
    row(R"({"sdkConfig":{"showUI":{},"keepAliveInterval":30000,"uiTagUrls":["http://p/"]}})", false, {}, 0, {});
    row(R"({"sdkConfig":[{"showUI":true}],"showUI":true,"uiTagUrls":[7]})", false, {}, 0, {});
    row(R"({"uiTagUrls":["http://a b/"],"apiUrl":"a"})", false, {}, 0, {});
}

void tst_ZVConfig::answers()
{
    QFETCH(QByteArray, json);
    if (!json.isEmpty())
        configure(json);
    const auto &config = ZVConfig::shared();
    QCOMPARE(config.params().has_value(), !json.isEmpty());
    QTEST(config.shouldShowRecommendation(), "show");
    QTEST(config.UITagUrl().isValid() ? config.UITagUrl() : QUrl(), "page");
    QTEST(config.keepAliveInterval(), "interval");
    QTEST(config.apiURL(), "api");
    QFETCH(QString, api);
    QCOMPARE(config.apiURL().isNull(), api.isNull());
}

void tst_ZVConfig::firstIntervalStays()
{
    auto &config = ZVConfig::shared();
    QCOMPARE(config.keepAliveInterval(), 0.0); // Asked for again while there is none.
    configure(R"({"sdkConfig":{"keepALiveInterval":30000}})");
    QCOMPARE(config.keepAliveInterval(), 30.0);
    config.setKeepAliveInterval(1800);
    configure(R"({"sdkConfig":{"keepALiveInterval":10000,"apiUrl":"b"}})");
    QCOMPARE(config.keepAliveInterval(), 30.0);
    QCOMPARE(config.apiURL(), u"b"_s);

    init();
    config.setKeepAliveInterval(1800);
    config.setKeepAliveInterval(900);
    configure(R"({"sdkConfig":{"keepALiveInterval":30000}})");
    QCOMPARE(config.keepAliveInterval(), 1800.0);
}

QTEST_GUILESS_MAIN(tst_ZVConfig)
#include "tst_ZVConfig.moc"
