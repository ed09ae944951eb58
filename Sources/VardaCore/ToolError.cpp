// ToolError keeps only what it will ever show: its message may be a whole dump of a tool's output.
#include "VardaCore/ToolError.h"

#include "VardaCore/Text.h"

namespace varda {

namespace {

/// In user-perceived characters: as much as an alert can sensibly show.
constexpr qsizetype descriptionLimit = 3000;

} // namespace

ToolError::ToolError(const QString &description)
    : m_description(description)
    , m_what(description.toUtf8())
{
}

ToolError ToolError::message(const QString &message)
{
    return ToolError(firstCharacters(message, descriptionLimit));
}

const char *ToolError::what() const noexcept
{
    return m_what.constData();
}

QString describe(const std::exception &error)
{
    if (const auto *toolError = dynamic_cast<const ToolError *>(&error))
        return toolError->errorDescription();
    return decodeUtf8(error.what());
}

} // namespace varda
