#pragma once

#include <QRegularExpression>
#include <QTest>

/// Calls QTest::addColumn for each column.
template<class... Types> void addColumns(std::initializer_list<const char *> names)
{
    auto name = names.begin();
    (QTest::addColumn<Types>(*name++), ...);
}

/// The cells of a table, in which a line is a row and "|" separates the cells. A line that begins with a space goes on
/// with the row before, one that begins with "#" is a comment.
inline QList<QStringList> rowsOf(const char *table)
{
    auto text = QString::fromLatin1(table);
    text.replace(QRegularExpression(QStringLiteral("\n +")), QStringLiteral(" "));
    QList<QStringList> rows;
    for (const auto &line : text.split(u'\n', Qt::SkipEmptyParts)) {
        QStringList cells;
        for (const auto &cell : line.split(u'|'))
            cells.append(cell.trimmed());
        if (!line.startsWith(u'#'))
            rows.append(cells);
    }
    return rows;
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
