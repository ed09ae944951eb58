// FaultTable: what the tests have seen, as the tables of docs/tables/faults.md.
#include "FaultTable.h"

#include "Support/FileContents.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

QString line(const QStringList &cells)
{
    return u"| "_s + cells.join(u" | "_s) + u" |\n"_s;
}

/// Start and end of the part called `name` in `text`; behind the text where there is none.
std::pair<qsizetype, qsizetype> place(const QString &text, const QString &name)
{
    const QString opening = u"<!-- "_s + name + u" -->\n"_s;
    const qsizetype start = text.indexOf(opening);
    const qsizetype end = text.indexOf(u"<!-- end of "_s + name + u" -->"_s);
    return start < 0 || end < start ? std::pair(text.size(), text.size()) : std::pair(start + opening.size(), end);
}

} // namespace

void FaultTable::record(const QString &row, const QString &column, const QString &cell)
{
    if (!m_rows.contains(row))
        m_rows << row;
    if (!m_columns.contains(column))
        m_columns << column;
    m_cells[row][column] = cell;
}

QString FaultTable::markdown() const
{
    QString text = line(QStringList{m_corner} + m_columns);
    text += line(QStringList(m_columns.size() + 1, u"---"_s));
    for (const QString &row : m_rows) {
        QStringList cells = {row};
        for (const QString &column : m_columns)
            cells << m_cells[row].value(column, u"–"_s);
        text += line(cells);
    }
    return text;
}

QString documented(const QString &path, const QString &name)
{
    const QString text = QString::fromUtf8(contents(path));
    const auto [start, end] = place(text, name);
    return text.mid(start, end - start);
}

void document(const QString &path, const QString &name, const QString &text)
{
    QString whole = QString::fromUtf8(contents(path));
    const auto [start, end] = place(whole, name);
    whole.replace(start, end - start, text);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(whole.toUtf8()) < 0)
        qFatal("Cannot write %s", qUtf8Printable(path));
}

} // namespace varda::test
