// The output is decoded on demand: most results are only searched for a word or two, or hold a picture.
#include "VardaCore/CommandResult.h"

#include "VardaCore/Text.h"
#include "VardaCore/ToolError.h"

namespace varda {

QString CommandResult::text() const
{
    return decodeUtf8(data);
}

CommandResult CommandResult::checked() const
{
    if (code == 0)
        return *this;
    throw ToolError::message(error.isEmpty() ? text() : error);
}

} // namespace varda
