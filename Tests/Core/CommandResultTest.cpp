// A finished command's text and verdict, and the sentences of errors.
#include "VardaCore/CommandResult.h"
#include "Support/FailureOf.h"
#include "VardaCore/ToolError.h"

#include <QTest>

#include <stdexcept>
#include <system_error>
#include <type_traits>

using namespace varda;
using namespace Qt::StringLiterals;

static_assert(std::is_nothrow_copy_constructible_v<ToolError>);

namespace {

/// The description of the error that `result` is checked into.
QString failureOf(const CommandResult &result)
{
    return varda::failureOf([&] { result.checked(); });
}

/// One user-perceived character of seven code points: a family of four.
QString family()
{
    return u"👩\u200d👩\u200d👧\u200d👦"_s;
}

} // namespace

class CommandResultTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void passesCodeZeroWhateverStandardErrorHolds()
    {
        const CommandResult passed = CommandResult{0, "abc", u"a warning"_s}.checked();
        QCOMPARE(passed.code, 0);
        QCOMPARE(passed.data, "abc");
        QCOMPARE(passed.error, u"a warning"_s);
    }

    void failsOnAnyOtherCode_data()
    {
        QTest::addColumn<qint32>("code");
        QTest::newRow("exit code") << 1;
        QTest::newRow("signal number or exit code") << 9;
        QTest::newRow("highest exit code") << 255;
        QTest::newRow("unknown") << -1;
    }
    void failsOnAnyOtherCode()
    {
        QFETCH(qint32, code);
        const CommandResult result{code, "output", u"why"_s};
        QVERIFY_THROWS_EXCEPTION(ToolError, result.checked());
        QCOMPARE(result.code, code);
        QCOMPARE(result.data, "output");
        QCOMPARE(result.error, u"why"_s);
    }

    void prefersStandardErrorEvenWhenItIsALoneNewline() { QCOMPARE(failureOf({1, "abc", u"\n"_s}), u"\n"_s); }

    void fallsBackToTheWholeOutputWithItsNewline() { QCOMPARE(failureOf({1, "Failure\n", {}}), u"Failure\n"_s); }

    void failsWithEmptyDescriptionWhenBothStreamsAreEmpty() { QCOMPARE(failureOf({1, {}, {}}), QString()); }

    void repairsOutputThatIsNotUtf8()
    {
        QCOMPARE((CommandResult{0, "\x61\xFF\x62", {}}.text()), u"a\uFFFDb"_s);
        QCOMPARE(failureOf({1, "\x61\xFF\x62", {}}), u"a\uFFFDb"_s);
    }

    void keepsWhitespaceMarkAndNulsOfOutput()
    {
        const CommandResult result{0, QByteArray("\xEF\xBB\xBF a\0b\r\n\n", 10), {}};
        QCOMPARE(result.text(), QStringView(u"\uFEFF a\0b\r\n\n", 8).toString());
        QCOMPARE((CommandResult{0, {}, {}}.text()), QString());
    }

    void shortensDescriptionTo3000Characters_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("description");
        const QString most = QString(2999, u'x');
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("3,000 letters") << most + u'y' << most + u'y';
        QTest::newRow("3,001 letters") << most + u"yz"_s << most + u'y';
        QTest::newRow("emoji last") << most + family() << most + family();
        QTest::newRow("emoji last, more behind") << most + family() + u"z"_s << most + family();
        QTest::newRow("emoji throughout") << family().repeated(3001) << family().repeated(3000);
        QTest::newRow("combining mark behind the last") << most + u"e\u0301z"_s << most + u"e\u0301"_s;
        QTest::newRow("CR LF is one character") << most + u"\r\nz"_s << most + u"\r\n"_s;
    }
    void shortensDescriptionTo3000Characters()
    {
        QFETCH(QString, message);
        QFETCH(QString, description);
        QCOMPARE(ToolError::message(message).errorDescription(), description);
        QCOMPARE(describe(ToolError::message(message)), description);
    }

    void shortensWholeStandardErrorDumps()
    {
        QCOMPARE(failureOf({1, {}, QString(100'000, u'e')}), QString(3000, u'e'));
    }

    void describesToolErrorBehindNulToo()
    {
        const ToolError error = ToolError::message(QStringView(u"a\0é…", 4).toString());
        QCOMPARE(describe(error), QStringView(u"a\0é…", 4).toString());
        QCOMPARE(error.what(), "a");
        QCOMPARE(ToolError::message(u"é…"_s).what(), "\xC3\xA9\xE2\x80\xA6");
    }

    void describesPlatformErrorsAsSentences()
    {
        const std::system_error missing(ENOENT, std::generic_category(), "/opt/gerät/adb");
        QCOMPARE(describe(missing), u"/opt/gerät/adb: No such file or directory"_s);
        QCOMPARE(describe(std::runtime_error("a\xFF\x62")), u"a\uFFFDb"_s);
    }
};

QTEST_GUILESS_MAIN(CommandResultTest)
#include "CommandResultTest.moc"
