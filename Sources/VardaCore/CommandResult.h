// What a finished command left behind.
#pragma once

#include <QByteArray>
#include <QString>

namespace varda {

/// One finished command. An immutable value, made by the command runner.
struct CommandResult
{
    /// The exit code, or the number of the signal that ended the child; the two are not told apart.
    qint32 code = 0;
    /// Standard output, byte for byte; at most 32 MiB.
    QByteArray data;
    /// Standard error, decoded like `text()`; neither trimmed nor shortened, of any length.
    QString error;

    /// Standard output decoded as UTF-8, afresh on each call: U+FFFD for each maximal ill-formed subpart (Unicode
    /// Standard, section 3.9), a byte-order mark and NULs kept, nothing trimmed. Never fails.
    QString text() const;

    /// This result when `code` is 0. Throws a ToolError otherwise, with standard error as its message, or standard
    /// output when standard error is empty. A code of 0 alone is no proof of success: adb also exits with 0 after some
    /// failures.
    CommandResult checked() const;
};

} // namespace varda
