// The shell's words: what adb 34 and scrcpy really send, and what is refused.
#include "Shell/ShellSyntax.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda::phone;

class ShellSyntaxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splitsIntoWords_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("plain") << u"am start -W -n com.example.app/.Main"_s
                               << QStringList{u"am"_s, u"start"_s, u"-W"_s, u"-n"_s, u"com.example.app/.Main"_s};
        QTest::newRow("blanks and tabs") << u"  a \t b  "_s << QStringList{u"a"_s, u"b"_s};
        QTest::newRow("single quotes") << u"cmd package 'install' '-r' -S 12"_s
                                       << QStringList{u"cmd"_s, u"package"_s, u"install"_s, u"-r"_s, u"-S"_s, u"12"_s};
        QTest::newRow("nothing is special in single quotes")
            << u"echo '$x \"|\\'"_s << QStringList{u"echo"_s, u"$x \"|\\"_s};
        QTest::newRow("double quotes") << u"echo \"a 'b' \\\" c\""_s << QStringList{u"echo"_s, u"a 'b' \" c"_s};
        QTest::newRow("backslash in double quotes") << u"echo \"a\\n\""_s << QStringList{u"echo"_s, u"a\\n"_s};
        QTest::newRow("quotes within a word") << u"a'b c'\"d\"e"_s << QStringList{u"ab cde"_s};
        QTest::newRow("empty words") << u"a '' \"\""_s << QStringList{u"a"_s, QString(), QString()};
        QTest::newRow("escaped blank") << u"a\\ b"_s << QStringList{u"a b"_s};
        QTest::newRow("not ASCII") << u"echo 'Grüße 天気'"_s << QStringList{u"echo"_s, u"Grüße 天気"_s};
        QTest::newRow("an argument with an equals sign") << u"x a=b"_s << QStringList{u"x"_s, u"a=b"_s};
        QTest::newRow("a quoted equals sign assigns nothing") << u"'a'\\=b"_s << QStringList{u"a=b"_s};
        QTest::newRow("a path that no file matches") << u"logcat *:S"_s << QStringList{u"logcat"_s, u"*:S"_s};
    }

    void splitsIntoWords()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, words);
        const ShellScript script = parseShell(text);
        QCOMPARE(script.error, QString());
        QCOMPARE(script.commands.size(), 1);
        QCOMPARE(script.commands.first().words, words);
        QVERIFY(script.commands.first().assignments.isEmpty());
    }

    void runsCommandsInSequence()
    {
        const ShellScript script = parseShell(u"export ANDROID_LOG_TAGS=\"''\"; exec logcat '-d' '-t' '350'\n echo"_s);
        QCOMPARE(script.error, QString());
        QCOMPARE(script.commands.size(), 3);
        QCOMPARE(script.commands.at(0).words, (QStringList{u"export"_s, u"ANDROID_LOG_TAGS=''"_s}));
        QCOMPARE(script.commands.at(1).words, (QStringList{u"exec"_s, u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s}));
        QCOMPARE(script.commands.at(2).words, QStringList{u"echo"_s});
    }

    void takesLeadingAssignments()
    {
        const ShellScript script = parseShell(u"CLASSPATH=/data/x.jar B='c d' app_process / a.Server 4.1 scid=1"_s);
        QCOMPARE(script.commands.size(), 1);
        const ShellCommand command = script.commands.first();
        QCOMPARE(command.assignments, (QMap<QString, QString>{{u"CLASSPATH"_s, u"/data/x.jar"_s}, {u"B"_s, u"c d"_s}}));
        QCOMPARE(command.words, (QStringList{u"app_process"_s, u"/"_s, u"a.Server"_s, u"4.1"_s, u"scid=1"_s}));
    }

    void refusesWhatItDoesNotInterpret_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"ls | wc", "ls > x", "ls < x", "a & b", "a && b", "$(id)", "`id`", "echo $HOME",
                                 "echo \"$HOME\"", "(a)", "echo 'open", "echo \"open"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }

    void refusesWhatItDoesNotInterpret()
    {
        QFETCH(QString, text);
        const ShellScript script = parseShell(text);
        QVERIFY(!script.error.isEmpty());
        QVERIFY(script.commands.isEmpty());
    }

    void emptyTextHasNoCommand()
    {
        QCOMPARE(parseShell(QString()), ShellScript());
        QCOMPARE(parseShell(u" ; \n ;"_s), ShellScript());
    }

    void unescapesBytes()
    {
        QCOMPARE(unescaped(u"a\\n\\r\\t\\\\n\\xff\\x00é\\q\\x"_s), QByteArray("a\n\r\t\\n\xff\0\xc3\xa9\\q\\x", 14));
    }
};

QTEST_GUILESS_MAIN(ShellSyntaxTest)

#include "ShellSyntaxTest.moc"
