#include "LogCollector.h"
#include "Utilities.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace zelvano;

class tst_Utilities : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void subArrays_data();
    void subArrays();
    void texts();
};

void tst_Utilities::subArrays_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<qint64>("n");
    QTest::addColumn<QString>("toIndex");
    QTest::addColumn<QString>("fromIndex");
    const QString nothing;
    const auto most = std::numeric_limits<qint64>::max();
    QTest::newRow("1 of 5") << 5 << qint64(1) << u"[0]"_s << u"[1,2,3,4]"_s;
    QTest::newRow("2 of 5") << 5 << qint64(2) << u"[0,1]"_s << nothing;
    QTest::newRow("4 of 5") << 5 << qint64(4) << u"[0,1,2,3]"_s << nothing;
    QTest::newRow("5 of 5") << 5 << qint64(5) << nothing << nothing;
    QTest::newRow("6 of 5") << 5 << qint64(6) << nothing << nothing;
    QTest::newRow("0 of 5") << 5 << qint64(0) << nothing << nothing;
    QTest::newRow("-1 of 5") << 5 << qint64(-1) << nothing << nothing;
    QTest::newRow("least") << 5 << -most - 1 << nothing << nothing;
    QTest::newRow("most") << 5 << most << nothing << nothing;
    QTest::newRow("1 of 2") << 2 << qint64(1) << u"[0]"_s << u"[1]"_s;
    QTest::newRow("1 of 1") << 1 << qint64(1) << nothing << nothing;
    QTest::newRow("1 of 0") << 0 << qint64(1) << nothing << nothing;
}

void tst_Utilities::subArrays()
{
    QFETCH(int, size);
    QFETCH(qint64, n);
    QJsonArray array;
    for (int i = 0; i < size; ++i)
        array.append(i);
    const LogCollector log;
    const auto text = [](const std::optional<QJsonArray> &part) { return part ? toJSON(*part) : QString(); };
    QTEST(text(subArrayToIndex(array, n)), "toIndex");
    QTEST(text(subArrayFromIndex(array, n)), "fromIndex");
    QCOMPARE(log.lines().size(), n > 1 && n < size ? 1 : 0); // Past the end.
}

void tst_Utilities::texts()
{
    QCOMPARE(toJSON({"null"_L1, QJsonValue(), u"ä\"b"_s, 1.5}), u"[\"null\",null,\"ä\\\"b\",1.5]"_s);
    const LogCollector log;
    QCOMPARE(body({{"b"_L1, "1"_L1}, {"a"_L1, u"ü"_s}}), "{\"a\":\"ü\",\"b\":\"1\"}");
    QCOMPARE(log.lines(), QStringList{u"{\"a\":\"ü\",\"b\":\"1\"}"_s});
}

QTEST_GUILESS_MAIN(tst_Utilities)
#include "tst_Utilities.moc"
