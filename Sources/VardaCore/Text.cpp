// Decoding and grapheme clusters come from ICU: Qt 6.4 emits one U+FFFD per bad byte and drops a leading byte-order
// mark.
#include "VardaCore/Text.h"

#include <unicode/ubrk.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace varda {

namespace {

/// Bytes that one ICU call decodes; its lengths are 32-bit numbers.
constexpr qsizetype decodingChunk = 67'108'864;

/// UTF-16 units that are first searched for clusters; most texts are shorter, and most clusters are one unit.
constexpr qsizetype firstWindow = 4096;

constexpr UChar32 replacementCharacter = 0xFFFD;

bool isContinuationByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The length of a front part of `bytes`, about a chunk long, that ends where no UTF-8 sequence can go on. A sequence
/// has at most three continuation bytes: behind four of them in a row any place is such an end.
qsizetype chunkLength(QByteArrayView bytes)
{
    if (bytes.size() <= decodingChunk)
        return bytes.size();
    for (qsizetype end = decodingChunk; end > decodingChunk - 4; --end) {
        if (!isContinuationByte(bytes[end]))
            return end;
    }
    return decodingChunk;
}

/// Where the cluster number `count` of `text` ends, or the end of `text` when it has no more clusters than that.
qsizetype endOfCluster(QStringView text, qsizetype count)
{
    UErrorCode failure = U_ZERO_ERROR;
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> iterator(
        ubrk_open(UBRK_CHARACTER, "", text.utf16(), static_cast<int32_t>(text.size()), &failure), &ubrk_close);
    // The rules are part of ICU itself, so that only memory can be missing.
    if (U_FAILURE(failure))
        throw std::bad_alloc();
    int32_t end = 0;
    for (qsizetype found = 0; found < count && end < text.size(); ++found) {
        end = ubrk_next(iterator.get());
        if (end == UBRK_DONE)
            return text.size();
    }
    return end;
}

} // namespace

QString decodeUtf8(QByteArrayView bytes)
{
    // No sequence decodes to more UTF-16 units than it has bytes.
    QString text(bytes.size(), Qt::Uninitialized);
    auto *const units = reinterpret_cast<UChar *>(text.data());
    qsizetype length = 0;
    while (!bytes.isEmpty()) {
        const qsizetype chunk = chunkLength(bytes);
        int32_t decoded = 0;
        UErrorCode failure = U_ZERO_ERROR;
        u_strFromUTF8WithSub(units + length, static_cast<int32_t>(chunk), &decoded, bytes.data(),
                             static_cast<int32_t>(chunk), replacementCharacter, nullptr, &failure);
        length += decoded;
        bytes = bytes.sliced(chunk);
    }
    text.truncate(length);
    return text;
}

QString firstCharacters(const QString &text, qsizetype count)
{
    if (count <= 0)
        return {};
    if (text.size() <= count)
        return text;
    // Whether a cluster ends at a place is settled by what stands before it and the one code point behind it, so an end
    // found inside a window of whole code points is an end in the text. Each window is twice the one before it.
    constexpr qsizetype largestWindow = std::numeric_limits<int32_t>::max();
    for (qsizetype window = std::max(firstWindow, 2 * count);; window *= 2) {
        window = std::min({window, text.size(), largestWindow});
        const bool splitsPair = window < text.size() && text[window - 1].isHighSurrogate();
        const qsizetype size = splitsPair ? window - 1 : window;
        const qsizetype end = endOfCluster(QStringView(text).first(size), count);
        if (end < size || window == text.size() || window == largestWindow)
            return text.first(end);
    }
}

QList<QStringView> lines(QStringView text)
{
    const auto separates = [](QChar c) {
        return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
    };
    QList<QStringView> result;
    auto start = text.begin();
    for (;;) {
        const auto end = std::find_if(start, text.end(), separates);
        result.emplace_back(start, end);
        if (end == text.end())
            return result;
        start = end + 1;
    }
}

QString trimmed(const QString &text)
{
    // QChar::isSpace is true for exactly the characters with the property White_Space, all of them in one UTF-16 unit.
    return text.trimmed();
}

} // namespace varda
