#pragma once

#include <QTest>

/// QTest::addColumn for one after another.
template<class... Types> void addColumns(std::initializer_list<const char *> names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

/// One of the cases of a test that goes through them in a loop: says which it was when the test fails in it.
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
