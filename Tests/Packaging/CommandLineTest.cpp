// What the program answers on the command line, asked of the program itself.
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto guardTimeMilliseconds = 60'000;

struct Outcome
{
    int status;
    QByteArray output;
    QByteArray error;
};

/// Runs the program with the arguments on the platform, empty for what Qt chooses where there is no display.
Outcome run(const QStringList &arguments, const QString &platform)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"DISPLAY"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    environment.remove(u"QT_QPA_PLATFORM"_s);
    if (!platform.isEmpty())
        environment.insert(u"QT_QPA_PLATFORM"_s, platform);
    QProcess varda;
    varda.setProcessEnvironment(environment);
    varda.start(QStringLiteral(VARDA_PROGRAM), arguments);
    if (!varda.waitForFinished(guardTimeMilliseconds) || varda.exitStatus() != QProcess::NormalExit)
        return {.status = -1, .output = {}, .error = varda.errorString().toUtf8()};
    return {.status = varda.exitCode(), .output = varda.readAllStandardOutput(), .error = varda.readAllStandardError()};
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsHelpWithoutDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("long") << QStringList{u"--help"_s};
        QTest::newRow("short") << QStringList{u"-h"_s};
        QTest::newRow("with an option of Qt's") << QStringList{u"-reverse"_s, u"--help"_s};
    }
    void printsHelpWithoutDisplay()
    {
        QFETCH(const QStringList, arguments);
        const Outcome outcome = run(arguments, {});
        QCOMPARE(outcome.status, 0);
        QVERIFY2(outcome.output.startsWith("Usage: "), outcome.output.constData());
        QVERIFY(outcome.output.contains("--version"));
        QCOMPARE(outcome.error, QByteArray{});
    }

    void printsVersionWithoutDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("long") << QStringList{u"--version"_s};
        QTest::newRow("short") << QStringList{u"-v"_s};
    }
    void printsVersionWithoutDisplay()
    {
        QFETCH(const QStringList, arguments);
        const Outcome outcome = run(arguments, {});
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.output, QByteArray{"varda " VARDA_VERSION "\n"});
        QCOMPARE(outcome.error, QByteArray{});
    }

    void refusesWhatIsUnknown_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("sentence");
        QTest::newRow("option") << QStringList{u"--bogus"_s} << QByteArray{"varda: Unknown option 'bogus'.\n"};
        QTest::newRow("letter") << QStringList{u"-x"_s} << QByteArray{"varda: Unknown option 'x'.\n"};
        QTest::newRow("second file") << QStringList{u"demo.apk"_s, u"other.apk"_s}
                                     << QByteArray{"varda: Unexpected argument 'other.apk'.\n"};
        QTest::newRow("after an option of Qt's")
            << QStringList{u"-style"_s, u"fusion"_s, u"--bogus"_s} << QByteArray{"varda: Unknown option 'bogus'.\n"};
    }
    void refusesWhatIsUnknown()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QByteArray, sentence);
        const Outcome outcome = run(arguments, u"offscreen"_s);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.error.endsWith(QByteArray{sentence + "Try 'varda --help'.\n"}), outcome.error.constData());
        QCOMPARE(outcome.output, QByteArray{});
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
