// What an operation that fails says.
#pragma once

#include "VardaCore/ToolError.h"

#include <QString>

#include <exception>

namespace varda {

/// The sentence of the error that `operation` throws.
template <typename Operation>
QString failureOf(const Operation &operation)
{
    try {
        operation();
    } catch (const std::exception &error) {
        return describe(error);
    }
    return QStringLiteral("(no failure)");
}

} // namespace varda
