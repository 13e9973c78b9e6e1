#include "LogCollector.h"
#include "UserDefaults.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;
using zelvano::UserDefaults;

class tst_UserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_defaults.setFilePath(m_folder.filePath(u"good/defaults.ini"_s)); }
    void roundTrip_data();
    void roundTrip();
    void uselessFile_data();
    void uselessFile();
    void threads();

private:
    UserDefaults &m_defaults = UserDefaults::standard();
    const QTemporaryDir m_folder;
};

void tst_UserDefaults::roundTrip_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << u"3fb2c1"_s;
    QTest::newRow("empty") << u""_s;
    QTest::newRow("list-like") << u"a, b;c"_s;
    QTest::newRow("quoted") << u" \"x\\y\" = % [z]\n\t"_s;
    QTest::newRow("typed") << u"@Invalid()"_s;
    QTest::newRow("number") << u"007"_s;
    QTest::newRow("not latin") << u"Зеленый \U0001f3ac"_s;
}

void tst_UserDefaults::roundTrip()
{
    QFETCH(QString, text);
    m_defaults.setString(text, u"userId"_s);
    m_defaults.synchronize();
    m_defaults.setFilePath(m_folder.filePath(u"other.ini"_s));
    QVERIFY(m_defaults.stringForKey(u"userId"_s).isNull());
    // Under a new name, so that what Qt keeps in memory of the first file is no help.
    const auto copy = m_folder.filePath(QString::fromLatin1(QTest::currentDataTag()) + u".ini"_s);
    QVERIFY(QFile::copy(m_folder.filePath(u"good/defaults.ini"_s), copy));
    m_defaults.setFilePath(copy);
    QCOMPARE(m_defaults.stringForKey(u"userId"_s), text);
    QVERIFY(!m_defaults.stringForKey(u"userId"_s).isNull());
    m_defaults.setString(u"kept"_s, u"userUUID"_s);
    m_defaults.setString({}, u"userId"_s);
    QVERIFY(m_defaults.stringForKey(u"userId"_s).isNull());
    QCOMPARE(m_defaults.stringForKey(u"userUUID"_s), u"kept"_s);
}

void tst_UserDefaults::uselessFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("canBeWritten");
    QTest::newRow("inside a file") << u"file/defaults.ini"_s << false;
    QTest::newRow("a folder") << u"folder"_s << false;
    QTest::newRow("not text") << u"garbage.ini"_s << true;
}

void tst_UserDefaults::uselessFile()
{
    QFETCH(QString, path);
    QFETCH(bool, canBeWritten);
    QDir(m_folder.path()).mkpath(u"folder"_s);
    for (const auto name : {"file"_L1, "garbage.ini"_L1}) {
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\x00\xff]userId\n[\x80", 12);
    }
    m_defaults.setString(u"kept"_s, u"userId"_s);

    LogCollector log;
    m_defaults.setFilePath(m_folder.filePath(path));
    QVERIFY(m_defaults.stringForKey(u"userId"_s).isNull());
    for (int i = 0; i < 3; ++i) {
        m_defaults.setString(u"other"_s, u"userId"_s);
        m_defaults.synchronize();
    }
    const auto failure = "Error writing user defaults to "_L1 + m_folder.filePath(path);
    QCOMPARE(log.lines().size(), canBeWritten ? 0 : 1);
    QCOMPARE(log.beginningWith(failure).size(), log.lines().size());

    init();
    QCOMPARE(m_defaults.stringForKey(u"userId"_s), u"kept"_s);
}

void tst_UserDefaults::threads()
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < 20; ++i) {
                m_defaults.setString(QString::number(i), u"thread%1"_s.arg(t));
                m_defaults.stringForKey(u"thread%1"_s.arg((t + 1) % 4));
                m_defaults.synchronize();
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    for (int t = 0; t < 4; ++t)
        QCOMPARE(m_defaults.stringForKey(u"thread%1"_s.arg(t)), u"19"_s);
}

QTEST_GUILESS_MAIN(tst_UserDefaults)
#include "tst_UserDefaults.moc"
