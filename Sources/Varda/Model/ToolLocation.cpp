// ToolLocation: where the tools that Varda runs lie.
#include "Varda/Model/ToolLocation.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace varda {

namespace {

QString resource(const QString &relativePath)
{
    const QString directory = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../lib/varda");
    if (!QFileInfo(directory).isDir())
        qFatal("The resource directory is missing: %s", qUtf8Printable(directory));
    return directory + u'/' + relativePath;
}

} // namespace

QString ToolLocation::adb()
{
    return resource(QStringLiteral("Tools/platform-tools/adb"));
}

QString ToolLocation::scrcpy()
{
    return resource(QStringLiteral("Tools/scrcpy/scrcpy"));
}

QString ToolLocation::scrcpyServer()
{
    return resource(QStringLiteral("Tools/scrcpy/scrcpy-server"));
}

} // namespace varda
