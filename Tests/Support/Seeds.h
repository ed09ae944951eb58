// Seeds: what a test of random play is played with. A seed that failed once is kept in Tests/Data/<test>/seeds and
// played first from then on.
#pragma once

#include <QList>
#include <QString>

namespace varda::test {

/// The seeds kept for `test`, in the order of their file, and then `fresh` new ones, which are different each time.
QList<quint32> seedsFor(const QString &test, int fresh);

/// Gives the running test function one row for each of `seeds`, called "seed …", with the column "seed".
void addSeedRows(const QList<quint32> &seeds);

/// Says how to play the seed of a failed row of `test` again. Call it where each test function of random play ends;
/// does nothing where nothing failed.
void tellHowToReplay(const QString &test);

} // namespace varda::test
