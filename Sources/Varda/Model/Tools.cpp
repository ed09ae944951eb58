// Tools: no path is remembered, so that tools that are staged or removed meanwhile are noticed.
#include "Varda/Model/Tools.h"

#include "VardaCore/CommandRunner.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

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

QCoro::Task<CommandResult> runAdb(const CommandLine &line, std::optional<QString> input)
{
    return CommandRunner::run(ToolLocation::adb(), line.arguments, std::move(input), line.timeout);
}

} // namespace varda
