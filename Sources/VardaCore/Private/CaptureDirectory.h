// The private temporary directory that holds what one command writes.
#pragma once

#include "Private/Descriptor.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <filesystem>
#include <optional>
#include <string>

namespace varda {

/// A directory of its own, "varda-" and a new UUID in the per-user temporary directory (TMPDIR, else /tmp), readable by
/// this user only. The destructor removes it with everything in it. Everything here does blocking file work.
///
/// Errors are std::system_error whose text names the file: "/tmp/varda-…/stdout: Permission denied".
class CaptureDirectory
{
public:
    /// Where capture directories are made, whether or not it exists. Reads the environment: call it on a thread
    /// that may change that.
    static std::filesystem::path temporaryDirectory();

    /// Makes the directory in `parent`, for this user only; a missing `parent` is made first.
    explicit CaptureDirectory(const std::filesystem::path &parent = temporaryDirectory());
    Q_DISABLE_COPY_MOVE(CaptureDirectory)
    ~CaptureDirectory();

    /// Creates the empty file `name`, readable by this user only, and opens it for writing.
    Descriptor createFile(const char *name) const;

    /// The size in bytes of the file `name`; absent when the system cannot tell.
    std::optional<qint64> size(const char *name) const;

    /// The bytes of the file `name` up to its present end. What a process that the command left behind adds meanwhile
    /// is not waited for, and nothing beyond the first `limit` bytes is read.
    QByteArray read(const char *name, std::optional<qint64> limit = std::nullopt) const;

    /// The same without a limit, decoded like `decodeUtf8`; the bytes are never held all at once.
    QString readText(const char *name) const;

    /// Removes the directory now, ignoring errors. Removing it twice does no harm.
    void remove() const noexcept;

private:
    std::string path(const char *name) const;
    Descriptor open(const char *name) const;

    std::string m_path;
};

} // namespace varda
