#pragma once

#include <QTest>

/// Calls QTest::addColumn for each column.
template<class... Types> void addColumns(std::initializer_list<const char *> names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

/// A case in a test's loop. If the test fails inside, it prints the case's name.
class Case
{
public:
    explicit Case(const QByteArray &name) : m_name(name) {}
    ~Case()
    {
        if (QTest::currentTestFailed())
            qInfo("in the case \"%s\"", m_name.constData());
    }
    Q_DISABLE_COPY_MOVE(Case)

private:
    const QByteArray m_name;
};
