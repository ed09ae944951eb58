// Whatever is dropped on the window, only a regular local file whose name ends in ".apk" becomes the build, and
// anything else is refused in one sentence. "@" in the input stands for a folder that holds such a file, a directory of
// such a name, and a link to each.
#include "Fuzz.h"

#include "Support/FakeFileDialogs.h"
#include "Varda/Model/LocalPath.h"
#include "Varda/Model/VardaModel.h"
#include "Varda/View/DropZone.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace varda::fuzz {

namespace {

/// The folder that "@" stands for.
QByteArray folder()
{
    static const QTemporaryDir directory;
    static const bool filled = [] {
        const QDir dir(directory.path());
        QFile file(dir.filePath(u"a.apk"_s));
        return file.open(QIODevice::WriteOnly) && dir.mkdir(u"d.apk"_s) &&
               QFile::link(dir.filePath(u"a.apk"_s), dir.filePath(u"l.apk"_s)) &&
               QFile::link(dir.filePath(u"d.apk"_s), dir.filePath(u"k.apk"_s)) &&
               QFile::link(dir.filePath(u"a.apk"_s), dir.filePath(u"l.aab"_s));
    }();
    require(filled, "the folder can be filled");
    return QFile::encodeName(directory.path());
}

void checkAccepted(const QUrl &build, const QUrl &dropped)
{
    require(build == dropped, "the build is what was dropped");
    const QString path = localPath(build).value_or(QString());
    require(path.startsWith(u'/'), "the path that adb is given begins with a slash");
    require(path.endsWith(u".apk", Qt::CaseInsensitive), "a build's name ends in .apk");
    require(QFileInfo(path).isFile(), "a build is a regular file");
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    QMimeData mime;
    mime.setData(u"text/uri-list"_s, bytes(data, size).toByteArray().replace('@', folder()));
    const std::optional<QUrl> file = varda::firstFile(mime);
    if (!file)
        return 0;
    require(file->isValid() && varda::localPath(*file), "a drop is a local file or nothing");
    const auto model = varda::VardaModel::create(std::make_unique<varda::test::FakeFileDialogs>());
    model->acceptAPK(*file);
    require(model->apk().has_value() != model->error().has_value(), "a file is accepted or refused");
    if (model->apk())
        checkAccepted(*model->apk(), *file);
    return 0;
}
