// The checks between what the user types and adb's command lines.
#pragma once

#include <QString>

#include <optional>

namespace varda {

/// Pure checks without state. None of them trims, and each judges the whole text: a trailing newline fails. A value
/// that passes holds no whitespace, no shell character and no leading dash, so it is safe as a command-line argument.
struct Validation
{
    /// Whether `value` is an Android package ID: two or more segments of ASCII letters, digits and underscores joined
    /// by single dots, none beginning with a digit. No length limit.
    static bool package(const QString &value);

    /// Whether `value` is a host name, IPv4 address or bracketed IPv6 address, a colon, and a port from 1 to 65535.
    static bool endpoint(const QString &value);

    /// The first line of `output` that names an activity of `package` ("com.example.app/.MainActivity"), exactly as it
    /// stands there; absent when there is none.
    static std::optional<QString> component(const QString &output, const QString &package);

    /// Whether `value` is exactly six ASCII digits.
    static bool pairingCode(const QString &value);
};

} // namespace varda
