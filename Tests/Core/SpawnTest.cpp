// Launching: what a child is given, what it inherits, and how a launch fails.
#include "Private/Descriptor.h"
#include "StandInChild.h"
#include "Support/CoreTest.h"
#include "Support/FailureOf.h"
#include "Support/FileContents.h"
#include "Support/Wait.h"

#include <QRegularExpression>

#include <csignal>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace varda;
using namespace Qt::StringLiterals;

namespace {

QString launchFailureOf(const ChildDescription &description)
{
    return failureOf([&] { ChildProcess::launch(description); });
}

Descriptor openFile(const QString &path, int mode)
{
    return Descriptor(::open(QFile::encodeName(path).constData(), mode | O_CREAT, 0600));
}

} // namespace

class SpawnTest : public CoreTest
{
    Q_OBJECT

private Q_SLOTS:
    void tellsLaunchFailureAsASentence_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << u"missing"_s << u"No such file or directory"_s;
        QTest::newRow("not executable") << u"plain"_s << u"Permission denied"_s;
        QTest::newRow("directory") << u"folder"_s << u"Permission denied"_s;
        QTest::newRow("bad format") << u"scrap"_s << u"Exec format error"_s;
        QTest::newRow("below a file") << u"plain/adb"_s << u"Not a directory"_s;
        QTest::newRow("name too long") << QString(256, u'n') << u"File name too long"_s;
        QTest::newRow("NUL in the name") << u"a"_s + QChar(0) << u"Invalid argument"_s;
        QTest::newRow("not ASCII") << u"gerät 手机"_s << u"No such file or directory"_s;
    }
    void tellsLaunchFailureAsASentence()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        QVERIFY(QDir(m_home->path()).mkdir(u"folder"_s));
        for (const QString &file : {u"plain"_s, u"scrap"_s}) {
            const Descriptor created = openFile(m_home->filePath(file), O_WRONLY);
            QCOMPARE(::write(created.get(), "\1\2\3\4", 4), 4);
            QCOMPARE(::fchmod(created.get(), file == u"scrap" ? 0700 : 0600), 0);
        }
        ChildDescription description = standInThat(u"exit 0"_s);
        description.executable = m_home->path() + u'/' + name;
        const QString path = m_home->path() + u'/' + name.left(name.indexOf(QChar(0)));
        QVERIFY2(launchFailureOf(description).endsWith(u": "_s + reason), qPrintable(launchFailureOf(description)));
        QVERIFY2(launchFailureOf(description).startsWith(path), qPrintable(launchFailureOf(description)));
    }

    void refusesTextsThatACStringWouldCut()
    {
        ChildDescription argument = standInThat(u"exit 0"_s);
        argument.arguments << u"a"_s + QChar(0) + u'b';
        QVERIFY(launchFailureOf(argument).endsWith(u": Invalid argument"));
        ChildDescription variable = standInThat(u"exit 0"_s);
        variable.environment.append({u"NAME"_s, u"a"_s + QChar(0) + u'b'});
        QVERIFY(launchFailureOf(variable).endsWith(u": Invalid argument"));
    }

    void handsOnArgumentsVerbatim()
    {
        const QStringList arguments = {QString(),
                                       u" "_s,
                                       u"a b"_s,
                                       u"$HOME `id` * \\ \"quoted\" 'single'"_s,
                                       u"Prüfgerät – 手机 📱"_s,
                                       u"line\nfeed"_s,
                                       u"-s"_s,
                                       QString(255, u'n'),
                                       u"ä"_s.repeated(127),
                                       QString(100'000, u'x')};
        ChildDescription description = standInThat(u"report"_s);
        description.arguments << arguments;
        QCOMPARE(report(description)[u"argument"_s], QStringList({standIn(), u"report"_s}) + arguments);
    }

    void runsProgramsWithAnyName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("umlauts and spaces") << u"Prüf gerät"_s;
        QTest::newRow("CJK and emoji") << u"手机 📱"_s;
        QTest::newRow("quotes") << u"a\"b'c`d$e\\f"_s;
        QTest::newRow("255 bytes") << u"ä"_s.repeated(127) + u"x"_s;
        QTest::newRow("decomposed") << u"Pru\u0308f"_s;
    }
    void runsProgramsWithAnyName()
    {
        QFETCH(QString, name);
        ChildDescription description = standInThat(u"exit 7"_s);
        description.executable = m_home->filePath(name);
        QVERIFY(QFile::copy(standIn(), description.executable));
        const ChildProcess child = ChildProcess::launch(description);
        QVERIFY(resultOf(child.waitForExit()));
        QCOMPARE(child.status(), 7);
    }

    void inheritsEnvironmentWithOverridesInOrder()
    {
        qputenv("VARDA_TEST_KEPT", "kept");
        qputenv("VARDA_TEST_REPLACED", "old");
        ChildDescription description = standInThat(u"report"_s);
        description.environment = {{u"VARDA_TEST_REPLACED"_s, u"new"_s},
                                   {u"VARDA_TEST_ADDED"_s, u"first"_s},
                                   {u"VARDA_TEST_ADDED"_s, u"ünd=zuletzt"_s},
                                   {u"VARDA_TEST_EMPTY"_s, QString()}};
        const QStringList received = report(description)[u"variable"_s].filter(QRegularExpression(u"^VARDA_TEST_"_s));
        qunsetenv("VARDA_TEST_KEPT");
        qunsetenv("VARDA_TEST_REPLACED");
        QCOMPARE(received, QStringList({u"VARDA_TEST_KEPT=kept"_s, u"VARDA_TEST_REPLACED=new"_s,
                                        u"VARDA_TEST_ADDED=ünd=zuletzt"_s, u"VARDA_TEST_EMPTY="_s}));
    }

    void inheritsNoOtherDescriptor()
    {
        // Without close-on-exec, as a library of another maker may open one.
        const Descriptor leak(::open("/dev/null", O_RDONLY));
        const Descriptor high(::fcntl(leak.get(), F_DUPFD, 500));
        QVERIFY(leak && high);
        QStringList held = report(standInThat(u"report"_s))[u"descriptor"_s];
        held.sort();
        QCOMPARE(held, QStringList({u"0 /dev/null"_s, u"1 "_s + m_home->filePath(u"report"_s), u"2 /dev/null"_s}));
    }

    void startsWithNoSignalBlockedAndDefaultSigpipe()
    {
        sigset_t blocked;
        sigset_t previous;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGTERM);
        ::sigaddset(&blocked, SIGUSR1);
        QCOMPARE(::pthread_sigmask(SIG_BLOCK, &blocked, &previous), 0);
        const auto previousAction = std::signal(SIGPIPE, SIG_IGN);
        auto received = report(standInThat(u"report"_s));
        std::signal(SIGPIPE, previousAction);
        ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
        QCOMPARE(received[u"blocked"_s], QStringList());
        QVERIFY(!received[u"ignored"_s].contains(QString::number(SIGPIPE)));
    }

    void inheritsWorkingDirectoryAndSession()
    {
        auto received = report(standInThat(u"report"_s));
        QCOMPARE(received[u"directory"_s], QStringList(QDir::currentPath()));
        QCOMPARE(received[u"session"_s], QStringList(QString::number(::getsid(0))));
    }

    void leadsItsOwnSessionWhereAsked()
    {
        ChildDescription description = standInThat(u"report"_s);
        description.ownSession = true;
        auto received = report(description);
        QCOMPARE(received[u"session"_s], received[u"process"_s]);
    }

    void connectsGivenDescriptors()
    {
        const Descriptor input = openInput("abc");
        const Descriptor output = openFile(m_home->filePath(u"out"_s), O_WRONLY);
        ChildDescription description = standInThat(u"copy-input error xyz"_s);
        description.standardInput = StandardStream::from(input.get());
        description.standardOutput = StandardStream::from(output.get());
        description.standardError = StandardStream::from(output.get());
        const ChildProcess child = ChildProcess::launch(description);
        QVERIFY(resultOf(child.waitForExit()));
        QCOMPARE(contents(u"out"_s), "abcxyz");
    }

    void connectsDescriptorsThatAreThemselvesStandardStreams()
    {
        const Descriptor input = openInput("abc");
        const Descriptor output = openFile(m_home->filePath(u"out"_s), O_WRONLY);
        const Descriptor keptInput(::dup(STDIN_FILENO));
        const Descriptor keptOutput(::dup(STDOUT_FILENO));
        ChildDescription description = standInThat(u"copy-input"_s);
        description.standardInput = StandardStream::from(STDOUT_FILENO);
        description.standardOutput = StandardStream::from(STDIN_FILENO);
        // The other way round: standard output here is what the child is to read.
        ::dup2(input.get(), STDOUT_FILENO);
        ::dup2(output.get(), STDIN_FILENO);
        std::optional<ChildProcess> child;
        const QString failure = failureOf([&] { child = ChildProcess::launch(description); });
        if (keptInput)
            ::dup2(keptInput.get(), STDIN_FILENO);
        else
            ::close(STDIN_FILENO);
        ::dup2(keptOutput.get(), STDOUT_FILENO);
        QCOMPARE(failure, u"(no failure)"_s);
        QVERIFY(resultOf(child->waitForExit()));
        QCOMPARE(contents(u"out"_s), "abc");
    }

    void connectsDescriptorsWhereThisProcessHasNoStandardInput()
    {
        const Descriptor output = openFile(m_home->filePath(u"out"_s), O_WRONLY);
        ChildDescription description = standInThat(u"copy-input output abc"_s);
        description.standardOutput = StandardStream::from(output.get());
        const Descriptor kept(::dup(STDIN_FILENO));
        ::close(STDIN_FILENO);
        std::optional<ChildProcess> child;
        const QString failure = failureOf([&] { child = ChildProcess::launch(description); });
        if (kept)
            ::dup2(kept.get(), STDIN_FILENO);
        QCOMPARE(failure, u"(no failure)"_s);
        QVERIFY(resultOf(child->waitForExit()));
        QCOMPARE(contents(u"out"_s), "abc");
    }

    void saysWhenAGivenDescriptorIsNotOpen()
    {
        ChildDescription description = standInThat(u"exit 0"_s);
        description.standardOutput = StandardStream::from(9999);
        QCOMPARE(launchFailureOf(description), standIn() + u": Bad file descriptor"_s);
    }

private:
    /// A file that holds these bytes, to be read.
    Descriptor openInput(const QByteArray &bytes) const
    {
        Descriptor file = openFile(m_home->filePath(u"in"_s), O_RDWR);
        if (::pwrite(file.get(), bytes.constData(), static_cast<size_t>(bytes.size()), 0) != bytes.size())
            qFatal("Cannot write the input");
        return file;
    }

    QByteArray contents(const QString &name) const { return varda::test::contents(m_home->filePath(name)); }

    /// What a child that reports was given.
    QHash<QString, QStringList> report(ChildDescription description) const
    {
        {
            const Descriptor output = openFile(m_home->filePath(u"report"_s), O_WRONLY | O_CLOEXEC);
            description.standardOutput = StandardStream::from(output.get());
            const ChildProcess child = ChildProcess::launch(description);
            resultOf(child.waitForExit());
        }
        return readReport(contents(u"report"_s));
    }
};

QTEST_GUILESS_MAIN(SpawnTest)
#include "SpawnTest.moc"
