// The program's own error type, and the sentence that any error shows to the user.
#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace varda {

/// A failure told in one sentence (or a tool's own output) that is meant for the user.
class ToolError final : public std::exception
{
public:
    /// An error that says `message`.
    static ToolError message(const QString &message);

    /// The first 3,000 user-perceived characters of the message (extended grapheme clusters, Unicode Annex 29), with
    /// nothing appended to a shortened one.
    QString errorDescription() const { return m_description; }

    /// `errorDescription()` in UTF-8; as a C string it ends at the first NUL.
    const char *what() const noexcept override;

private:
    explicit ToolError(const QString &description);

    QString m_description;
    QByteArray m_what;
};

/// The sentence to show for any error: a ToolError's description, else what the error says of itself, taken as UTF-8.
/// The platform's errors (std::system_error) that the core throws read like "/path/adb: No such file or directory".
QString describe(const std::exception &error);

} // namespace varda
