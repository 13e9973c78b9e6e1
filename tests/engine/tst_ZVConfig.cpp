#include "Columns.h"
#include "ConfigAccess.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_ZVConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZVConfigTestAccess::reset(); }

    void wrongTypes()
    {
        const std::tuple<const char *, bool, QUrl, double, QString> cases[] = {
            {R"({"sdkConfig":{"showUI":true,"keepALiveInterval":30000,"apiUrl":"a"},"uiTagUrls":["x:p","x"]})", true,
             QUrl(u"x:p"_s), 30, u"a"_s},
            {R"({"sdkConfig":{"showUI":"true","keepALiveInterval":"1500","apiUrl":""}})", true, {}, 1.5, u""_s},
            {R"({"sdkConfig":{"showUI":"NO","keepALiveInterval":[1]},"uiTagUrls":[]})", false, {}, 0, {}},
            {R"({"sdkConfig":{"showUI":1,"keepALiveInterval":true},"uiTagUrls":"x:p"})", true, {}, 0.001, {}},
            {R"({"sdkConfig":{"showUI":{},"keepAliveInterval":30000,"uiTagUrls":["x:p"]}})", false, {}, 0, {}},
            {R"({"sdkConfig":[{"showUI":true}],"showUI":true,"uiTagUrls":[7]})", false, {}, 0, {}},
            {"{\"uiTagUrls\":[\"http://a b/\"],\"apiUrl\":\"a\"}", false, {}, 0, {}},
        };
        auto &config = ZVConfig::shared();
        for (const auto &[json, show, page, interval, api] : cases) {
            const Case current(json);
            init();
            QVERIFY(!config.params() && config.keepAliveInterval() == 0);
            config.setParams(QJsonDocument::fromJson(json).object());
            QCOMPARE(config.shouldShowRecommendation(), show);
            QCOMPARE(config.UITagUrl().isValid() ? config.UITagUrl() : QUrl(), page);
            QCOMPARE(config.keepAliveInterval(), interval);
            QVERIFY(config.apiURL() == api && config.apiURL().isNull() == api.isNull());
        }
    }

    void firstIntervalStays()
    {
        auto &config = ZVConfig::shared();
        const auto configure = [&config](double interval) {
            config.setParams({{"sdkConfig"_L1, QJsonObject{{"keepALiveInterval"_L1, interval}}}});
        };
        configure(30000);
        QCOMPARE(config.keepAliveInterval(), 30.0);
        config.setKeepAliveInterval(1800);
        configure(10000);
        QCOMPARE(config.keepAliveInterval(), 30.0);
        init();
        config.setKeepAliveInterval(1800);
        config.setKeepAliveInterval(900);
        configure(30000);
        QCOMPARE(config.keepAliveInterval(), 1800.0);
    }
};

QTEST_GUILESS_MAIN(tst_ZVConfig)
#include "tst_ZVConfig.moc"
