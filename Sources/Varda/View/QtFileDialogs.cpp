// QtFileDialogs: a title, a filter and a first folder for each kind of file; later the last folder is offered.
#include "Varda/View/QtFileDialogs.h"

#include "Varda/View/ErrorAlert.h"
#include "Varda/View/Widgets/PlainText.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTreeView>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

// Of the file dialog's details.
constexpr int nameColumn = 0;
constexpr int kindColumn = 2;

constexpr int questionMargin = 20;

struct KindOfFile
{
    QString title;
    QString filter;
    QString suffix;
    QStandardPaths::StandardLocation home;
};

KindOfFile kindOfFile(SaveKind kind)
{
    switch (kind) {
    case SaveKind::PngImage:
        return {u"Save Screenshot"_s, u"PNG images (*.png)"_s, u"png"_s, QStandardPaths::PicturesLocation};
    case SaveKind::Mpeg4Movie:
        return {u"Save Recording"_s, u"MPEG-4 movies (*.mp4)"_s, u"mp4"_s, QStandardPaths::MoviesLocation};
    case SaveKind::PlainText:
        break;
    }
    return {u"Export Console"_s, u"Plain text (*.txt)"_s, u"txt"_s, QStandardPaths::DocumentsLocation};
}

/// The folder for files of `home`'s kind, or the home folder if the desktop has none.
QString existingFolder(QStandardPaths::StandardLocation home)
{
    const QString folder = QStandardPaths::writableLocation(home);
    return QDir(folder).exists() ? folder : QDir::homePath();
}

/// The parent of a file dialog: the window in front. Never the alert, which would close the dialog with itself, or be
/// shown above the dialog: Qt looks for the topmost parent for ever if two windows are each other's parent.
QWidget *host()
{
    QWidget *front = QApplication::activeWindow();
    return qobject_cast<ErrorAlert *>(front) ? front->parentWidget() : front;
}

/// Qt's own dialog cuts off the texts in its narrow columns, and its column of file types says less than the icons.
void fitColumns(const QFileDialog &dialog)
{
    auto *details = dialog.findChild<QTreeView *>();
    if (!details) // the desktop's dialog
        return;
    details->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    details->header()->setStretchLastSection(false);
    details->header()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    details->hideColumn(kindColumn);
}

/// Whether a file that is at `path` already may be replaced. A directory there makes the writing fail instead.
bool mayWrite(const QString &path, QWidget *host)
{
    const QFileInfo file(path);
    if (!file.exists() || file.isDir())
        return true;
    QMessageBox question(QMessageBox::NoIcon, u"Varda"_s,
                         u"“%1” already exists. Do you want to replace it?"_s.arg(visibleLine(file.fileName())),
                         QMessageBox::Cancel, host);
    question.setObjectName(u"replaceQuestion"_s);
    question.setTextFormat(Qt::PlainText);
    question.layout()->setContentsMargins(questionMargin, questionMargin, questionMargin, questionMargin);
    const QPushButton *replace = question.addButton(u"Replace"_s, QMessageBox::AcceptRole);
    question.setDefaultButton(QMessageBox::Cancel);
    question.exec();
    return question.clickedButton() == replace;
}

} // namespace

std::optional<QUrl> QtFileDialogs::chooseBuild()
{
    // The brackets are for file choosers that tell upper from lower case.
    QFileDialog dialog(host(), u"Choose APK"_s, {}, u"Android packages (*.[aA][pP][kK])"_s);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    if (m_buildFolder.isEmpty())
        m_buildFolder = existingFolder(QStandardPaths::DownloadLocation);
    const auto path = ask(dialog, m_buildFolder);
    return path ? std::optional(QUrl::fromLocalFile(*path)) : std::nullopt;
}

std::optional<QString> QtFileDialogs::saveLocation(SaveKind kind, const QString &name)
{
    const KindOfFile file = kindOfFile(kind);
    QString &folder = m_saveFolders.try_emplace(kind, existingFolder(file.home)).first->second;
    QWidget *const below = host();
    for (QString offered = name;;) {
        QFileDialog dialog(below, file.title, {}, file.filter);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setDefaultSuffix(file.suffix);
        // A desktop's dialog would ask about the name as it was typed, before the suffix is there.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        dialog.setDirectory(folder);
        dialog.selectFile(offered);
        std::optional<QString> path = ask(dialog, folder);
        if (!path || mayWrite(*path, below))
            return path;
        offered = QFileInfo(*path).fileName();
    }
}

/// Asks, starting in `folder`, which becomes the folder of the answer.
std::optional<QString> QtFileDialogs::ask(QFileDialog &dialog, QString &folder)
{
    dialog.setObjectName(u"fileDialog"_s);
    dialog.setSupportedSchemes({u"file"_s});
    dialog.setDirectory(folder);
    fitColumns(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    const QString path = QDir::cleanPath(dialog.selectedFiles().constFirst());
    folder = QFileInfo(path).absolutePath();
    return path;
}

} // namespace varda
