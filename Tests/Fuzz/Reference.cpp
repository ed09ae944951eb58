// Slow and plain second implementations.
#include "Reference.h"

#include <array>
#include <optional>

namespace varda::fuzz {

namespace {

struct Range
{
    unsigned char first;
    unsigned char last;

    bool contains(unsigned char byte) const { return byte >= first && byte <= last; }
};

/// One row of table 3-7.
struct Row
{
    int length;
    std::array<Range, 4> bytes;
};

constexpr Range tail{0x80, 0xBF};
constexpr std::array<Row, 9> wellFormed = {{
    {1, {{{0x00, 0x7F}}}},
    {2, {{{0xC2, 0xDF}, tail}}},
    {3, {{{0xE0, 0xE0}, {0xA0, 0xBF}, tail}}},
    {3, {{{0xE1, 0xEC}, tail, tail}}},
    {3, {{{0xED, 0xED}, {0x80, 0x9F}, tail}}},
    {3, {{{0xEE, 0xEF}, tail, tail}}},
    {4, {{{0xF0, 0xF0}, {0x90, 0xBF}, tail, tail}}},
    {4, {{{0xF1, 0xF3}, tail, tail, tail}}},
    {4, {{{0xF4, 0xF4}, {0x80, 0x8F}, tail, tail}}},
}};

std::optional<Row> rowOf(unsigned char lead)
{
    for (const Row &row : wellFormed) {
        if (row.bytes[0].contains(lead))
            return row;
    }
    return std::nullopt;
}

/// How many bytes at the front of `bytes` fit `row`.
int fittingBytes(QByteArrayView bytes, const Row &row)
{
    int count = 0;
    while (count < row.length && count < bytes.size() &&
           row.bytes[static_cast<size_t>(count)].contains(static_cast<unsigned char>(bytes[count])))
        ++count;
    return count;
}

char32_t codePoint(QByteArrayView sequence)
{
    constexpr std::array<unsigned, 5> leadMasks = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t value = static_cast<unsigned char>(sequence[0]) & leadMasks[static_cast<size_t>(sequence.size())];
    for (const char byte : sequence.sliced(1))
        value = (value << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    return value;
}

} // namespace

QString referenceDecode(QByteArrayView bytes)
{
    QString result;
    while (!bytes.isEmpty()) {
        const std::optional<Row> row = rowOf(static_cast<unsigned char>(bytes[0]));
        const int fitting = row ? fittingBytes(bytes, *row) : 1;
        const char32_t value = row && fitting == row->length ? codePoint(bytes.first(fitting)) : U'\uFFFD';
        result += QStringView(QChar::fromUcs4(value));
        bytes = bytes.sliced(fitting);
    }
    return result;
}

bool isWhiteSpace(QChar c)
{
    const char16_t unit = c.unicode();
    return (unit >= 0x0009 && unit <= 0x000D) || unit == 0x0020 || unit == 0x0085 || unit == 0x00A0 || unit == 0x1680 ||
           (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 || unit == 0x2029 || unit == 0x202F || unit == 0x205F ||
           unit == 0x3000;
}

QList<QString> referenceLines(const QString &text)
{
    QList<QString> result = {QString()};
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        const bool separates = (unit >= 0x000A && unit <= 0x000D) || unit == 0x0085 || unit == 0x2028 || unit == 0x2029;
        if (separates)
            result.append(QString());
        else
            result.last().append(c);
    }
    return result;
}

} // namespace varda::fuzz
