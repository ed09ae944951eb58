// VardaModel: choosing and installing a build.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/LocalPath.h"
#include "Varda/Model/Tools.h"
#include "VardaCore/ToolError.h"

#include <QFileInfo>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// A regular file whose name ends in ".apk", in any letter case. A link counts as what it leads to.
bool isBuild(const QFileInfo &file)
{
    const bool named = file.suffix().toLower() == u"apk" && !file.completeBaseName().isEmpty();
    return named && file.isFile();
}

QCoro::Task<QString> installBuild(QString serial, QFileInfo build)
{
    const CommandResult result = co_await runAdb(Adb::install(serial, build.filePath()));
    const QString output = result.checked().text();
    if (!output.contains(u"Success"_s))
        throw ToolError::message(output + result.error);
    co_return u"Installed "_s + build.fileName() + u" on "_s + serial + u". Existing app data was retained."_s;
}

} // namespace

void VardaModel::chooseAPK()
{
    if (const std::optional<QUrl> location = m_dialogs->chooseBuild())
        acceptAPK(*location);
}

void VardaModel::acceptAPK(const QUrl &location)
{
    const std::optional<QString> path = localPath(location);
    if (path && isBuild(QFileInfo(*path)))
        apk = location;
    else
        error = u"Choose a regular .apk file. Android App Bundles (.aab) need to be converted into APKs first."_s;
}

/// The disk has just been asked about this file, so that it is no slow answer.
void VardaModel::readChosenBuild()
{
    const std::optional<QString> path = apk() ? localPath(*apk()) : std::nullopt;
    m_chosenBuild = path ? readBuildFile(*path) : std::nullopt;
}

void VardaModel::install()
{
    const std::optional<AndroidDevice> device = actionTarget();
    const std::optional<QString> path = apk() ? localPath(*apk()) : std::nullopt;
    if (!device || !path)
        return;
    const QFileInfo build(*path);
    run(u"Installing "_s + build.fileName() + u"…"_s,
        [serial = device->id, build] { return installBuild(serial, build); });
}

} // namespace varda
