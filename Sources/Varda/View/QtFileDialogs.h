// QtFileDialogs: the desktop's file dialogs, or Qt's own where the desktop has none.
#pragma once

#include "Varda/Model/FileDialogs.h"

#include <map>

class QFileDialog;

namespace varda {

/// Starts in the folder that suits the kind of file, and later in the one used last, for as long as the program runs.
class QtFileDialogs final : public FileDialogs
{
public:
    std::optional<QUrl> chooseBuild() override;
    std::optional<QString> saveLocation(SaveKind kind, const QString &name) override;

private:
    static std::optional<QString> ask(QFileDialog &dialog, QString &folder);

    QString m_buildFolder;
    std::map<SaveKind, QString> m_saveFolders;
};

} // namespace varda
