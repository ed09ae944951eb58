// Decoding, user-perceived characters, lines and trimming.
#include "VardaCore/Text.h"

#include <QTest>

using namespace varda;
using namespace Qt::StringLiterals;

namespace {

QString repaired(qsizetype count, const QString &rest = {})
{
    return QString(count, QChar::ReplacementCharacter) + rest;
}

/// Bytes that one decoding step takes at a time.
constexpr qsizetype chunk = 67'108'864;

} // namespace

class TextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesEachMaximalIllFormedSubpartOnce_data()
    {
        QTest::addColumn<QByteArray>("hex");
        QTest::addColumn<QString>("text");
        QTest::newRow("truncated three bytes") << "E28241"_ba << repaired(1, u"A"_s);
        QTest::newRow("truncated four bytes") << "F09F9841"_ba << repaired(1, u"A"_s);
        QTest::newRow("truncated at the end") << "41F09F98"_ba << u"A"_s + repaired(1);
        QTest::newRow("surrogate") << "EDA080"_ba << repaired(3);
        QTest::newRow("stray continuation") << "80BF41"_ba << repaired(2, u"A"_s);
        QTest::newRow("never a lead byte") << "C1F5FEFF"_ba << repaired(4);
        QTest::newRow("byte-order mark is kept") << "EFBBBF41"_ba << u"\uFEFFA"_s;
        QTest::newRow("byte-order marks are kept") << "EFBBBFEFBBBF"_ba << u"\uFEFF\uFEFF"_s;
        QTest::newRow("well-formed") << "41C3A9E282ACF09F9880"_ba << u"Aé€😀"_s;
        QTest::newRow("largest code point") << "F48FBFBF"_ba << u"\U0010FFFF"_s;
        QTest::newRow("noncharacter is well-formed") << "EFBFBF"_ba << u"\uFFFF"_s;
        // The examples of the Unicode Standard, section 3.9.
        QTest::newRow("not the shortest form") << "C0AFE080BFF0818241"_ba << repaired(8, u"A"_s);
        QTest::newRow("surrogates") << "EDA080EDBFBFEDAF41"_ba << repaired(8, u"A"_s);
        QTest::newRow("other ill-formed") << "F4919293FF4180BF42"_ba << repaired(5, u"A"_s) + repaired(2, u"B"_s);
        QTest::newRow("truncated sequences") << "E180E2F09192F1BF41"_ba << repaired(4, u"A"_s);
    }
    void replacesEachMaximalIllFormedSubpartOnce()
    {
        QFETCH(QByteArray, hex);
        QFETCH(QString, text);
        QCOMPARE(decodeUtf8(QByteArray::fromHex(hex)), text);
    }

    void decodesBlocksCutAnywhereLikeTheWhole_data() { replacesEachMaximalIllFormedSubpartOnce_data(); }
    void decodesBlocksCutAnywhereLikeTheWhole()
    {
        QFETCH(QByteArray, hex);
        QFETCH(QString, text);
        const QByteArray bytes = QByteArray::fromHex(hex);
        for (qsizetype first = 0; first <= bytes.size(); ++first) {
            for (qsizetype second = first; second <= bytes.size(); ++second) {
                Utf8Decoder decoder(0);
                decoder.append(bytes.first(first));
                decoder.append(bytes.sliced(first, second - first));
                decoder.append(bytes.sliced(second));
                QCOMPARE(decoder.finish(), text);
            }
        }
    }

    void keepsNuls() { QCOMPARE(decodeUtf8(QByteArray("\0a\0", 3)), QStringView(u"\0a\0", 3).toString()); }

    void decodesNothingToNothing() { QCOMPARE(decodeUtf8({}), QString()); }

    void decodesAcrossChunks_data()
    {
        QTest::addColumn<int>("shift");
        QTest::addColumn<QByteArray>("sequence");
        QTest::addColumn<QString>("text");
        for (int shift = 1; shift <= 3; ++shift) {
            QTest::addRow("emoji %d", shift) << shift << "😀"_ba << u"😀"_s;
            QTest::addRow("truncated %d", shift) << shift << QByteArray("\xF0\x9F\x98") << repaired(1);
        }
        QTest::addRow("at the edge") << 0 << "😀"_ba << u"😀"_s;
        QTest::addRow("continuations") << 2 << QByteArray(6, '\x80') << repaired(6);
    }
    void decodesAcrossChunks()
    {
        QFETCH(int, shift);
        QFETCH(QByteArray, sequence);
        QFETCH(QString, text);
        const qsizetype front = chunk - shift;
        QByteArray bytes(front, 'x');
        bytes.append(sequence).append('y');
        const QString decoded = decodeUtf8(bytes);
        QCOMPARE(decoded.size(), front + text.size() + 1);
        QCOMPARE(decoded.sliced(front), text + u'y');
        QVERIFY(decoded.startsWith(u"xxx") && decoded[front - 1] == u'x');
    }

    void takesFirstCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("front");
        QTest::newRow("none") << u"abc"_s << 0 << QString();
        QTest::newRow("of nothing") << QString() << 3 << QString();
        QTest::newRow("all") << u"abc"_s << 3 << u"abc"_s;
        QTest::newRow("fewer") << u"abc"_s << 2 << u"ab"_s;
        QTest::newRow("surrogate pairs") << u"😀😀😀"_s << 2 << u"😀😀"_s;
        QTest::newRow("combining marks") << u"e\u0301e\u0301\u0323e"_s << 2 << u"e\u0301e\u0301\u0323"_s;
        QTest::newRow("flags") << u"🇩🇪🇫🇷🇮🇹"_s << 2 << u"🇩🇪🇫🇷"_s;
        QTest::newRow("skin tone") << u"👍🏽👍"_s << 1 << u"👍🏽"_s;
        QTest::newRow("Hangul jamo") << u"\u1112\u1161\u11AB\u1100\u1173\u11AF"_s << 1 << u"\u1112\u1161\u11AB"_s;
        QTest::newRow("CR LF") << u"\r\n\r\n"_s << 1 << u"\r\n"_s;
        QTest::newRow("NULs") << QString(5, QChar(0)) << 2 << QString(2, QChar(0));
        QTest::newRow("lone surrogates") << QString(3, QChar(0xD83D)) << 2 << QString(2, QChar(0xD83D));
    }
    void takesFirstCharacters()
    {
        QFETCH(QString, text);
        QFETCH(int, count);
        QFETCH(QString, front);
        QCOMPARE(firstCharacters(text, count), front);
    }

    void neverCutsACharacterWhereverItStands_data()
    {
        QTest::addColumn<QString>("character");
        QTest::newRow("emoji") << u"😀"_s;
        QTest::newRow("family") << u"👩\u200d👩\u200d👧\u200d👦"_s;
        QTest::newRow("flag") << u"🇩🇪"_s;
        QTest::newRow("marks") << u"e\u0301\u0323\u0301\u0323"_s;
    }
    void neverCutsACharacterWhereverItStands()
    {
        QFETCH(QString, character);
        // The front of a text is searched in steps of powers of two: stand across each place around such a step.
        for (const int step : {4096, 8192, 16384}) {
            for (int shift = 0; shift <= 12; ++shift) {
                const QString front(step - shift, u'x');
                const QString text = front + character + u"yz"_s + QString(20'000, u'w');
                QCOMPARE(firstCharacters(text, front.size() + 1), front + character);
                QCOMPARE(firstCharacters(text, front.size() + 2), front + character + u'y');
                const QString marks = u'e' + QString(step - shift, QChar(0x0301));
                QCOMPARE(firstCharacters(marks + character + u"yz"_s, 2), marks + character);
            }
        }
    }

    void survivesOneBaseWithAMillionMarks()
    {
        const QString hostile = u'e' + QString(1'000'000, QChar(0x0301));
        QCOMPARE(firstCharacters(hostile, 3000), hostile);
        QCOMPARE(firstCharacters(hostile + u"ab"_s, 2), hostile + u'a');
        QCOMPARE(firstCharacters(hostile.repeated(3) + u'a', 2), hostile.repeated(2));
    }

    void looksOnlyAtTheFrontOfALongText()
    {
        const QString text(100'000'000, u'x');
        for (int i = 0; i < 1000; ++i)
            QCOMPARE(firstCharacters(text, 3000).size(), 3000);
    }

    void splitsLinesAtEachNewlineCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("empty") << QString() << QStringList{QString()};
        QTest::newRow("one") << u"a"_s << QStringList{u"a"_s};
        QTest::newRow("last line is empty") << u"a\n"_s << QStringList{u"a"_s, QString()};
        QTest::newRow("CR LF") << u"a\r\nb"_s << QStringList{u"a"_s, QString(), u"b"_s};
        QTest::newRow("all seven") << u"a\nb\vc\fd\re\u0085f\u2028g\u2029h"_s << u"a b c d e f g h"_s.split(u' ');
        QTest::newRow("no others") << u"a\tb\x1C\x1D\x1E\u00A0\u200Bc"_s
                                   << QStringList{u"a\tb\x1C\x1D\x1E\u00A0\u200Bc"_s};
    }
    void splitsLinesAtEachNewlineCharacter()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        QStringList found;
        for (const QStringView line : lines(text))
            found << line.toString();
        QCOMPARE(found, expected);
    }

    void trimsEveryWhiteSpaceCharacter()
    {
        const QString white =
            u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
            "\u200A\u2028\u2029\u202F\u205F\u3000"_s;
        QCOMPARE(white.size(), 25);
        for (const QChar c : white)
            QCOMPARE(trimmed(c + u"a b"_s + c), u"a b"_s);
        QCOMPARE(trimmed(white + u"a"_s + white), u"a"_s);
        QCOMPARE(trimmed(white), QString());
        QCOMPARE(trimmed(u"a"_s), u"a"_s);
    }

    void trimsNothingElse()
    {
        for (const QChar c : u"\0\x1C\x1F\u180E\u200B\u200C\u200D\u2060\uFEFF"_s)
            QCOMPARE(trimmed(QString(c)), QString(c));
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "TextTest.moc"
