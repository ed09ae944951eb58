// Shows that code under test cleaned up behind it.
#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace varda {

/// What this process held when the object was made: child processes (zombies too), file descriptors, and capture
/// directories in its temporary directory.
///
/// Make one in a test's `init()` and check it in `cleanup()`:
/// `QTRY_COMPARE(m_census->newcomers(), QStringList());` (an abandoned child is reaped on a thread of its own).
/// A test program that looks at directories sets TMPDIR to a directory of its own first.
class ProcessCensus
{
public:
    ProcessCensus();

    /// What this process holds now but did not then, one readable line each.
    QStringList newcomers() const;

private:
    QSet<QString> m_before;
};

} // namespace varda
