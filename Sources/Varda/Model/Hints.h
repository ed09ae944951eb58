// Hints: what to do about a failure that a tool describes in words for its own makers.
#pragma once

#include <QString>

#include <optional>
#include <span>

namespace varda {

/// What helps with one kind of failure.
struct Hint
{
    /// What to look for in the failure's text: alternatives between "|", each of one or two pieces in order, with "…"
    /// between them. Each piece is matched case by case and as whole words.
    QStringView words;
    /// One or two sentences for the user.
    QStringView advice;
    /// Where the advice comes from.
    QStringView source;
};

/// All hints; the first that matches a failure counts.
std::span<const Hint> allHints();

/// The advice for the failure `text`, which may be any text, or nothing if the failure is not a known one. An empty
/// text, blanks included, is a failure without a reason. Pure; any thread.
std::optional<QString> hintFor(const QString &text);

} // namespace varda
