// LocalPath: which file of this computer an address means.
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varda {

/// The absolute path of a file of this computer; nothing for the address of anything else. A host counts as this
/// computer if it is absent, "localhost" or this computer's own name (RFC 8089).
///
/// The path is as it was given: "folder/link/../file" leads through the link's target, where "folder/file" need not be.
std::optional<QString> localPath(const QUrl &location);

} // namespace varda
