// SaveFile: writing a whole file, or leaving the old one as it was.
#include "Varda/Model/SaveFile.h"

#include "VardaCore/ToolError.h"

#include <QSaveFile>

namespace varda {

void saveFile(const QString &path, const QByteArray &contents)
{
    QSaveFile file(path);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.commit();
    if (!saved)
        throw ToolError::message(path + QStringLiteral(": ") + file.errorString());
}

} // namespace varda
