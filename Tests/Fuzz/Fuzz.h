// What the fuzz targets share. A target is one function that takes any bytes and states a property of what the program
// makes of them. It is built twice: with libFuzzer, which looks for bytes that break the property, and with Replay.cpp,
// which runs it over the seeds in Tests/Data as a regression test.
#pragma once

#include "VardaCore/Text.h"

#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace varda::fuzz {

/// States a property. An exception that nobody catches is a finding for libFuzzer; Replay.cpp tells in which file.
inline void require(bool holds, const char *property)
{
    if (!holds)
        throw std::logic_error(property);
}

inline QByteArrayView bytes(const uint8_t *data, size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

/// The input as the program would read it from a tool.
inline QString text(const uint8_t *data, size_t size)
{
    return decodeUtf8(bytes(data, size));
}

inline bool isAsciiLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

inline bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

} // namespace varda::fuzz
