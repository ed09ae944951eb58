// The child processes of a test.
#pragma once

#include <QDir>
#include <QFile>
#include <QStringList>

namespace varda::test {

/// The children of this process, zombies included, by number.
inline QStringList childProcesses()
{
    QStringList children;
    const QDir threads(QStringLiteral("/proc/self/task"));
    for (const QString &thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile list(threads.filePath(thread + QStringLiteral("/children")));
        if (list.open(QIODevice::ReadOnly))
            children += QString::fromLatin1(list.readAll()).split(u' ', Qt::SkipEmptyParts);
    }
    return children;
}

} // namespace varda::test
