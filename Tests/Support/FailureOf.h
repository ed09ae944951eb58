// What an operation that fails says.
#pragma once

#include "Support/Wait.h"
#include "VardaCore/ToolError.h"

#include <QString>

#include <exception>
#include <utility>

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

/// The sentence of the error that `task` ends with.
template <typename T>
QString failureOf(QCoro::Task<T> task)
{
    return failureOf([&] { resultOf(std::move(task)); });
}

} // namespace varda
