// What a file holds that a test looks at.
#pragma once

#include <QByteArray>
#include <QFile>

namespace varda::test {

/// All bytes of the file; "(cannot be read)" if so.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("(cannot be read)");
}

} // namespace varda::test
