// LocalPath: the host is checked here, because QUrl takes a file of any host for local.
#include "Varda/Model/LocalPath.h"

#include <QDir>
#include <QSysInfo>

namespace varda {

using namespace Qt::StringLiterals;

std::optional<QString> localPath(const QUrl &location)
{
    const QString host = location.authority();
    const bool here = host.isEmpty() || host == u"localhost" || host == QSysInfo::machineHostName().toLower();
    if (!location.isLocalFile() || !here)
        return std::nullopt;
    const QString path = location.path(QUrl::FullyDecoded);
    return path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path;
}

} // namespace varda
