// SaveFile: writing a whole file, or leaving the old one as it was.
#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>

namespace varda {

/// Writes `contents` to `path` in one step: into a temporary file beside it, flushed to the disk and renamed into
/// place. Through a symbolic link it replaces what the link leads to. Throws a ToolError that names the file and the
/// reason; an existing file is then unchanged. Any thread; blocks while it writes.
void saveFile(const QString &path, const QByteArray &contents);

/// As `saveFile`, on a thread of its own: a slow disk does not block the window. The end of the program waits for it.
/// Needs an event loop on the caller's thread; also throws std::system_error if no thread can be started.
QCoro::Task<> saveFileInBackground(QString path, QByteArray contents);

} // namespace varda
