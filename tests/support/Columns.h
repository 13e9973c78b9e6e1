#pragma once

#include <QTest>

/// QTest::addColumn for one after another.
template<class... Types> void addColumns(std::initializer_list<const char *> names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}
