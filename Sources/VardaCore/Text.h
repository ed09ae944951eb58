// Unicode text as the program needs it: decoding of tool output, lines, user-perceived characters, trimming.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringView>

namespace varda {

/// `bytes` decoded as UTF-8 with one U+FFFD for each maximal ill-formed subpart (Unicode Standard, section 3.9, which
/// QString::fromUtf8 does not follow). A byte-order mark and NULs are kept. Never fails.
QString decodeUtf8(QByteArrayView bytes);

/// Decodes UTF-8 that arrives in blocks, cut anywhere, to the text that `decodeUtf8` makes of the whole.
class Utf8Decoder
{
public:
    /// Sets aside the room that the text of `expectedBytes` bytes may take; the text may become longer.
    explicit Utf8Decoder(qsizetype expectedBytes) { m_text.reserve(expectedBytes); }

    void append(QByteArrayView block);

    /// The text of all blocks. Call it once, last.
    QString finish();

private:
    void decode(QByteArrayView bytes);

    QString m_text;
    /// The last bytes, where a sequence may go on in the next block.
    QByteArray m_rest;
};

/// The first `count` user-perceived characters of `text` (extended grapheme clusters, Unicode Annex 29), all of it when
/// it has no more. Looks at the front of a long text only, in time linear in what it looks at.
QString firstCharacters(const QString &text, qsizetype count);

/// `text` split at every single U+000A, U+000B, U+000C, U+000D, U+0085, U+2028 and U+2029, so that CR LF gives an empty
/// line in between. The views look into `text`'s characters. An empty text is one empty line.
QList<QStringView> lines(QStringView text);

/// `text` without leading and trailing white space and newlines: all characters with the property White_Space.
QString trimmed(const QString &text);

} // namespace varda
