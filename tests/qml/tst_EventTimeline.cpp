#include "QmlHost.h"

#include <QStandardPaths>

using namespace Qt::StringLiterals;
using namespace zelvano;

namespace {

const auto elements = u"MediaPlayer { id: media; source: window.first }\n"
                      "Recommendations { id: recs; apiKey: 'key'; pageId: 'page'; player: media }\n"
                      "EventLog { id: events; recommendations: recs }\n"
                      "EventTimeline { id: timeline; log: events; width: 400; height: 480 }\n"_s;

} // namespace

/// The inspector, in a QML host with a real session.
class tst_EventTimeline : public QObject
{
    Q_OBJECT

    static QQuickItem *find(const QmlHost &host, const QString &name)
    {
        return host.window()->findChild<QQuickItem *>(name);
    }
    static void type(const QmlHost &host, const QString &text)
    {
        auto *field = find(host, u"filter"_s);
        field->setProperty("text", QString());
        field->forceActiveFocus();
        for (const auto character : text)
            QTest::keyClick(host.window(), character.toLatin1());
    }

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void followsSessions()
    {
        QmlHost host(elements);
        const auto told = u"events.toJsonLines().toString().split('\"what\":\"suggestionsDidFetched\"').length - 1"_s;
        QVERIFY(host.waitFor(told + u" === 1"_s));
        host.run(u"recs.start()"_s);
        QVERIFY(host.waitFor(told + u" === 2"_s)); // Another session's engine is seen, too.
        QVERIFY(host.waitFor(u"recs.videos.length > 0"_s));
        host.run(u"recs.destroy()"_s);
        QVERIFY(host.waitFor(u"events.recommendations === null"_s));
        QVERIFY(host.run(u"events.count"_s).toInt() > 0);
    }

    void lookedThrough()
    {
        QmlHost host(elements);
        QVERIFY(host.waitFor(u"recs.videos.length > 0"_s));
        auto *const list = find(host, u"events"_s);
        auto *const details = find(host, u"details"_s);
        const auto rows = [&] { return list->property("count").toInt(); };
        const int all = rows();
        QCOMPARE(all, host.run(u"events.count"_s).toInt());
        type(host, u"READY"_s);
        QCOMPARE(rows(), 2); // The request and its answer.
        type(host, u"nothing like it"_s);
        QCOMPARE(rows(), 0);
        type(host, {});
        QVERIFY(rows() >= all);

        type(host, u"channels"_s);
        QVERIFY(!details->isVisible());
        list->forceActiveFocus();
        QTest::keyClick(host.window(), Qt::Key_Down);
        QVERIFY(waitUntil([&] { return details->isVisible(); }));
        QVERIFY(QJsonDocument::fromJson(details->property("text").toByteArray()).isObject());

        QFile file(host.run(u"events.exportToDownloads()"_s).toUrl().toLocalFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto lines = file.readAll().trimmed().split('\n');
        QCOMPARE(lines.size(), host.run(u"events.count"_s).toInt());
        QVERIFY(QJsonDocument::fromJson(lines.last()).isObject());
        QVERIFY(file.remove());
        host.run(u"events.clear()"_s);
        QCOMPARE(rows(), 0);
    }
};

UI_TEST_MAIN(tst_EventTimeline)
#include "tst_EventTimeline.moc"
