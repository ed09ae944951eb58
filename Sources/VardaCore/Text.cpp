// Grapheme clusters and the decoding of ill-formed bytes come from ICU: Qt 6.4 emits one U+FFFD per bad byte.
#include "VardaCore/Text.h"

#include <QStringDecoder>

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

/// The length of the front part of `bytes` that ends where no UTF-8 sequence can go on. A sequence is a byte of 0xC0 or
/// more and at most three continuation bytes: behind any other four bytes is such an end.
qsizetype completeLength(QByteArrayView bytes)
{
    for (qsizetype place = bytes.size() - 1; place >= std::max<qsizetype>(bytes.size() - 4, 0); --place) {
        if (!isContinuationByte(bytes[place]))
            return static_cast<unsigned char>(bytes[place]) < 0xC0U ? bytes.size() : place;
    }
    return bytes.size();
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
    Utf8Decoder decoder(bytes.size());
    decoder.append(bytes);
    return decoder.finish();
}

void Utf8Decoder::append(QByteArrayView block)
{
    QByteArray joined;
    if (!m_rest.isEmpty()) {
        joined = m_rest + block;
        block = joined;
    }
    while (block.size() > decodingChunk) {
        const qsizetype length = completeLength(block.first(decodingChunk));
        decode(block.first(length));
        block = block.sliced(length);
    }
    const qsizetype length = completeLength(block);
    decode(block.first(length));
    m_rest = block.sliced(length).toByteArray();
}

QString Utf8Decoder::finish()
{
    decode(m_rest);
    return std::move(m_text);
}

/// No sequence goes on behind `bytes`, which are at most a chunk.
void Utf8Decoder::decode(QByteArrayView bytes)
{
    const qsizetype before = m_text.size();
    // No sequence decodes to more UTF-16 units than it has bytes.
    m_text.resize(before + bytes.size());
    QChar *const end = m_text.data() + before;
    if (bytes.isValidUtf8()) {
        // Well-formed text reads alike everywhere, and several times faster here.
        QStringDecoder decoder(QStringDecoder::Utf8,
                               QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        m_text.truncate(decoder.appendToBuffer(end, bytes) - m_text.constData());
        return;
    }
    int32_t decoded = 0;
    UErrorCode failure = U_ZERO_ERROR;
    u_strFromUTF8WithSub(reinterpret_cast<UChar *>(end), static_cast<int32_t>(bytes.size()), &decoded, bytes.data(),
                         static_cast<int32_t>(bytes.size()), replacementCharacter, nullptr, &failure);
    m_text.truncate(before + decoded);
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
