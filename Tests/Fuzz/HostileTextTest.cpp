// Long texts made to be slow: each is worked through in linear time. A function that were quadratic in any of them
// would take hours; nothing here looks at a clock but the time-out of the test itself.
#include "VardaCore/AndroidDevice.h"
#include "VardaCore/Text.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/Validation.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// UTF-16 units.
constexpr qsizetype length = 2'000'000;

QString filledWith(const QString &pattern)
{
    return pattern.repeated(length / pattern.size());
}

} // namespace

class HostileTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shorteningIsLinear_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("oneCharacter");
        QTest::newRow("combining marks") << u"\u0301"_s << true;
        QTest::newRow("prepended marks") << u"\u0600"_s << true;
        QTest::newRow("joined emoji") << u"\U0001F469\u200D"_s << true;
        QTest::newRow("variation selectors") << u"\uFE0F"_s << true;
        QTest::newRow("regional indicators") << u"\U0001F1E9"_s << false;
        QTest::newRow("leading consonants") << u"\u1100"_s << true;
        QTest::newRow("syllables") << u"\u1100\u1161\u11A8"_s << false;
        QTest::newRow("carriage returns") << u"\r"_s << false;
        QTest::newRow("letters with marks") << u"a\u0301\u0302\u0303\u0304"_s << false;
    }
    void shorteningIsLinear()
    {
        QFETCH(QString, pattern);
        QFETCH(bool, oneCharacter);
        const QString text = filledWith(pattern);
        const QString shown = ToolError::message(text).errorDescription();
        QCOMPARE(shown.size() == text.size(), oneCharacter);
        QCOMPARE(firstCharacters(text, 1).size() == text.size(), oneCharacter);
    }

    void parsingIsLinear_data()
    {
        QTest::addColumn<QString>("pattern");
        for (const QString &pattern :
             {u" "_s, u"\n"_s, u"a "_s, u"model:"_s, u"a device\n"_s, u"a offline "_s, u"\u2028"_s})
            QTest::newRow(qUtf8Printable(pattern)) << pattern;
    }
    void parsingIsLinear()
    {
        QFETCH(QString, pattern);
        const QString text = filledWith(pattern);
        const qsizetype devices =
            pattern == u"a device\n"_s ? text.size() / pattern.size() : pattern.startsWith(u"a o");
        QCOMPARE(AndroidDevice::parse(text).size(), devices);
        QCOMPARE(Validation::component(text, u"com.example.app"_s), std::nullopt);
    }

    void checkingIsLinear_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("segments") << filledWith(u"a."_s);
        QTest::newRow("letters") << filledWith(u"a"_s);
        QTest::newRow("colons") << filledWith(u"1:"_s);
        QTest::newRow("digits") << u"a:"_s + filledWith(u"1"_s) + u'x';
        QTest::newRow("ports") << filledWith(u"a:1"_s) + u'.';
        QTest::newRow("brackets") << filledWith(u"["_s) + u":1"_s;
    }
    void checkingIsLinear()
    {
        QFETCH(QString, text);
        QVERIFY(!Validation::package(text));
        QVERIFY(!Validation::endpoint(text));
        QVERIFY(!Validation::pairingCode(text));
        QCOMPARE(Validation::component(text, text.first(1000)), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(HostileTextTest)
#include "HostileTextTest.moc"
