// What a file holds that a test looks at.
#pragma once

#include <QByteArray>
#include <QFile>

namespace varda::test {

/// All bytes of the file; empty if it cannot be read.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace varda::test
