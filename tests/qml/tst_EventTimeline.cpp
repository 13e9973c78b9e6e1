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

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void followsSessions();
    void filter();
    void details();
    void exportedFile();

private:
    static QQuickItem *find(const QmlHost &host, const QString &name)
    {
        return host.window()->findChild<QQuickItem *>(name);
    }
    static int rows(const QmlHost &host) { return find(host, u"events"_s)->property("count").toInt(); }
    static void type(const QmlHost &host, const QString &text)
    {
        auto *field = find(host, u"filter"_s);
        field->setProperty("text", QString());
        field->forceActiveFocus();
        for (const auto character : text)
            QTest::keyClick(host.window(), character.toLatin1());
    }
};

void tst_EventTimeline::followsSessions()
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

void tst_EventTimeline::filter()
{
    QmlHost host(elements);
    QVERIFY(host.waitFor(u"recs.videos.length > 0"_s));
    const int all = rows(host);
    QCOMPARE(all, host.run(u"events.count"_s).toInt());
    type(host, u"READY"_s);
    QCOMPARE(rows(host), 2); // The request and its answer.
    type(host, u"nothing like it"_s);
    QCOMPARE(rows(host), 0);
    type(host, {});
    QVERIFY(rows(host) >= all);
    host.run(u"events.clear()"_s);
    QCOMPARE(rows(host), 0);
}

void tst_EventTimeline::details()
{
    QmlHost host(elements);
    QVERIFY(host.waitFor(u"recs.videos.length > 0"_s));
    auto *list = find(host, u"events"_s);
    auto *text = find(host, u"details"_s);
    QVERIFY(list && text && !text->isVisible());
    type(host, u"channels"_s);
    list->forceActiveFocus();
    QTest::keyClick(host.window(), Qt::Key_Down);
    QVERIFY(waitUntil([&] { return text->isVisible(); }));
    QVERIFY(QJsonDocument::fromJson(text->property("text").toByteArray()).isObject());
}

void tst_EventTimeline::exportedFile()
{
    QmlHost host(elements);
    QVERIFY(host.waitFor(u"recs.videos.length > 0"_s));
    QFile file(host.run(u"events.exportToDownloads()"_s).toUrl().toLocalFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto lines = file.readAll().trimmed().split('\n');
    QCOMPARE(lines.size(), host.run(u"events.count"_s).toInt());
    QVERIFY(QJsonDocument::fromJson(lines.last()).isObject());
    QVERIFY(file.remove());
}

int main(int argc, char **argv)
{
    return runUiTest<tst_EventTimeline>(argc, argv);
}

#include "tst_EventTimeline.moc"
