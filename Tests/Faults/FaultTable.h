// FaultTable: what the tests have seen, as the tables of docs/tables/faults.md.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace varda::test {

/// A table of rows and columns in the order in which they were first seen.
class FaultTable
{
public:
    explicit FaultTable(const QString &corner)
        : m_corner(corner)
    {
    }

    void record(const QString &row, const QString &column, const QString &cell);

    /// As Markdown; a cell that was not recorded is a dash.
    QString markdown() const;

private:
    QString m_corner;
    QStringList m_rows;
    QStringList m_columns;
    QHash<QString, QHash<QString, QString>> m_cells;
};

/// The part of the file at `path` between the lines `<!-- name -->` and `<!-- end of name -->`.
QString documented(const QString &path, const QString &name);

/// Puts `text` there.
void document(const QString &path, const QString &name, const QString &text);

} // namespace varda::test
