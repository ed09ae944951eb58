// BuildFile: what tells one build of a file from the next, and how a user reads it.
#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace varda {

/// A file at one moment.
struct BuildFile
{
    qint64 size = 0; ///< in bytes
    QDateTime written;

    bool operator==(const BuildFile &) const = default;
};

/// The file at `path`, or nothing if there is no regular file. Asks the disk; any thread.
std::optional<BuildFile> readBuildFile(const QString &path);

/// `file` in words, as of `now`: "24 MB · 3 minutes ago". Says so if it is not what `chosen` was. Pure.
QString describeBuild(const std::optional<BuildFile> &file, const std::optional<BuildFile> &chosen,
                      const QDateTime &now);

} // namespace varda
