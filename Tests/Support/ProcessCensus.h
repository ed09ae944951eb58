// Shows that code under test cleaned up behind it.
#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace varda {

/// The ids of this process's children, zombies included.
QStringList childProcesses();

/// What this process held when the object was made: child processes (zombies too), file descriptors, and capture
/// directories in its temporary directory.
///
/// Make one in a test's `init()` and check it in `cleanup()`: `QCOMPARE(m_census->leftovers(), QString());`. A test
/// program sets TMPDIR to a directory of its own first, or it sees what other programs make there meanwhile.
class ProcessCensus
{
public:
    ProcessCensus();

    /// What this process has come to hold and does not give up within the guard time, while its event loop turns; one
    /// readable line each. Returns as soon as there is nothing: an abandoned child, for one, is reaped a little later.
    QString leftovers() const;

    /// What this process holds at this moment but did not then, one readable line each.
    QStringList newcomers() const;

private:
    QSet<QString> m_before;
};

} // namespace varda
