// FileDialogs: what the model asks of the user about files, so that it needs no window itself.
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varda {

/// The kinds of file that Varda writes.
enum class SaveKind {
    PlainText,  ///< a console export, ".txt"
    PngImage,   ///< a screenshot, ".png"
    Mpeg4Movie, ///< a recording, ".mp4"
};

/// Modal questions about files. Main thread.
///
/// A call may run a nested event loop: polls end and properties change while it is open, so its caller re-reads
/// whatever it relies on. An absent answer means that the user cancelled.
class FileDialogs
{
public:
    FileDialogs() = default;
    Q_DISABLE_COPY_MOVE(FileDialogs)
    virtual ~FileDialogs() = default;

    /// Asks for one existing ".apk" file; never a directory.
    virtual std::optional<QUrl> chooseBuild() = 0;

    /// Asks where to save a file of `kind`, proposing `name`, and has the user confirm replacing an existing file.
    /// The answer is an absolute local path.
    virtual std::optional<QString> saveLocation(SaveKind kind, const QString &name) = 0;
};

} // namespace varda
