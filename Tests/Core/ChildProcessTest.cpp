// Launching, watching, ending and leaving a child.
#include "VardaCore/ChildProcess.h"
#include "VardaCore/Descriptor.h"
#include "VardaCore/ToolError.h"

#include "Support/ProcessCensus.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <memory>
#include <optional>
#include <system_error>
#include <type_traits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace varda;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

static_assert(std::is_nothrow_move_constructible_v<ChildProcess>);
static_assert(std::is_nothrow_move_assignable_v<ChildProcess>);
static_assert(!std::is_copy_constructible_v<ChildProcess>);

namespace {

using Clock = ChildProcess::Clock;

/// A child that behaves as `arguments` say and writes to the null device.
ChildDescription standInThat(const QString &arguments)
{
    ChildDescription description;
    description.executable = standIn();
    description.arguments = arguments.split(u' ');
    description.standardInput = StandardStream::nullDevice();
    description.standardOutput = StandardStream::nullDevice();
    description.standardError = StandardStream::nullDevice();
    return description;
}

QString failureOf(const ChildDescription &description)
{
    try {
        ChildProcess::launch(description);
    } catch (const std::system_error &error) {
        return describe(error);
    }
    return u"(no failure)"_s;
}

Descriptor openFile(const QString &path, int mode)
{
    return Descriptor(::open(QFile::encodeName(path).constData(), mode | O_CREAT, 0600));
}

/// The state letter of a process; none when it is gone.
QByteArray stateOf(pid_t pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1);
}

} // namespace

class ChildProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        m_census = std::make_unique<ProcessCensus>();
    }

    void cleanup() { QCOMPARE(m_census->leftovers(), QStringList()); }

    void reportsHowTheChildEnded_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<qint32>("status");
        QTest::newRow("success") << u"exit 0"_s << 0;
        QTest::newRow("failure") << u"exit 1"_s << 1;
        QTest::newRow("highest") << u"exit 255"_s << 255;
        QTest::newRow("terminated") << u"die-by TERM"_s << SIGTERM;
        QTest::newRow("killed") << u"die-by KILL"_s << SIGKILL;
        QTest::newRow("crashed") << u"die-by SEGV"_s << SIGSEGV;
    }
    void reportsHowTheChildEnded()
    {
        QFETCH(QString, arguments);
        QFETCH(qint32, status);
        const ChildProcess child = ChildProcess::launch(standInThat(arguments));
        QVERIFY(resultOf(child.waitForExit()));
        QVERIFY(!child.running());
        QCOMPARE(child.status(), status);
    }

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
        QVERIFY2(failureOf(description).endsWith(u": "_s + reason), qPrintable(failureOf(description)));
        QVERIFY2(failureOf(description).startsWith(path), qPrintable(failureOf(description)));
    }

    void refusesTextsThatACStringWouldCut()
    {
        ChildDescription argument = standInThat(u"exit 0"_s);
        argument.arguments << u"a"_s + QChar(0) + u'b';
        QVERIFY(failureOf(argument).endsWith(u": Invalid argument"));
        ChildDescription variable = standInThat(u"exit 0"_s);
        variable.environment.append({u"NAME"_s, u"a"_s + QChar(0) + u'b'});
        QVERIFY(failureOf(variable).endsWith(u": Invalid argument"));
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
        const QJsonArray received = report(description)[u"arguments"_s].toArray();
        QCOMPARE(received.at(0).toString(), standIn());
        QStringList rest;
        for (qsizetype i = 2; i < received.size(); ++i)
            rest << received.at(i).toString();
        QCOMPARE(rest, arguments);
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
        QStringList received;
        for (const QJsonValue variable : report(description)[u"environment"_s].toArray()) {
            if (variable.toString().startsWith(u"VARDA_TEST_"))
                received << variable.toString();
        }
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
        const QJsonObject descriptors = report(standInThat(u"report"_s))[u"descriptors"_s].toObject();
        QCOMPARE(descriptors.keys(), QStringList({u"0"_s, u"1"_s, u"2"_s}));
        QCOMPARE(descriptors[u"0"_s].toString(), u"/dev/null"_s);
        QCOMPARE(descriptors[u"2"_s].toString(), u"/dev/null"_s);
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
        const QJsonObject received = report(standInThat(u"report"_s));
        std::signal(SIGPIPE, previousAction);
        ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
        QCOMPARE(received[u"blockedSignals"_s].toArray(), QJsonArray());
        QVERIFY(!received[u"ignoredSignals"_s].toArray().contains(QString::number(SIGPIPE)));
    }

    void inheritsWorkingDirectoryAndSession()
    {
        const QJsonObject received = report(standInThat(u"report"_s));
        QCOMPARE(received[u"directory"_s].toString(), QDir::currentPath());
        QCOMPARE(received[u"session"_s].toInt(), ::getsid(0));
    }

    void leadsItsOwnSessionWhereAsked()
    {
        ChildDescription description = standInThat(u"report"_s);
        description.ownSession = true;
        const QJsonObject received = report(description);
        QCOMPARE(received[u"session"_s].toInt(), received[u"process"_s].toInt());
    }

    void connectsGivenDescriptors()
    {
        const Descriptor input = openFile(m_home->filePath(u"in"_s), O_RDWR);
        QCOMPARE(::write(input.get(), "abc", 3), 3);
        QCOMPARE(::lseek(input.get(), 0, SEEK_SET), 0);
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
        const Descriptor input = openFile(m_home->filePath(u"in"_s), O_RDWR);
        QCOMPARE(::write(input.get(), "abc", 3), 3);
        QCOMPARE(::lseek(input.get(), 0, SEEK_SET), 0);
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
        const QString failure = failureIn([&] { child = ChildProcess::launch(description); });
        if (keptInput)
            ::dup2(keptInput.get(), STDIN_FILENO);
        else
            ::close(STDIN_FILENO);
        ::dup2(keptOutput.get(), STDOUT_FILENO);
        QCOMPARE(failure, QString());
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
        const QString failure = failureIn([&] { child = ChildProcess::launch(description); });
        if (kept)
            ::dup2(kept.get(), STDIN_FILENO);
        QCOMPARE(failure, QString());
        QVERIFY(resultOf(child->waitForExit()));
        QCOMPARE(contents(u"out"_s), "abc");
    }

    void saysWhenAGivenDescriptorIsNotOpen()
    {
        ChildDescription description = standInThat(u"exit 0"_s);
        description.standardOutput = StandardStream::from(9999);
        QCOMPARE(failureOf(description), standIn() + u": Bad file descriptor"_s);
    }

    void waitsUntilTheDeadlineOnly()
    {
        const LoopMonitor monitor;
        const ChildProcess child = ChildProcess::launch(standInThat(u"sleep 60"_s));
        QVERIFY(!resultOf(child.waitForExit(Clock::now() + 80ms)));
        QVERIFY(monitor.turns() > 10);
        QVERIFY(child.running());
        QCOMPARE(child.status(), std::nullopt);
        // A deadline that has passed is no reason to suspend.
        QVERIFY(child.waitForExit(Clock::now()).isReady());
        child.kill();
        QVERIFY(resultOf(child.waitForExit()));
        QCOMPARE(child.status(), SIGKILL);
        QVERIFY(child.waitForExit(Clock::now() - 1s).isReady());
        QVERIFY(resultOf(child.waitForExit(Clock::now() - 1s)));
    }

    void asksTheChildToEnd()
    {
        ChildDescription description = standInThat(u"exit-on TERM 5 create-file %1 sleep 60"_s.arg(ready()));
        const ChildProcess child = ChildProcess::launch(description);
        QTRY_VERIFY(QFile::exists(ready()));
        child.terminate();
        child.terminate();
        QVERIFY(resultOf(child.waitForExit()));
        QCOMPARE(child.status(), 5);
    }

    void killsChildThatIgnoresTerminate()
    {
        const ChildProcess child =
            ChildProcess::launch(standInThat(u"ignore TERM create-file %1 sleep 60"_s.arg(ready())));
        QTRY_VERIFY(QFile::exists(ready()));
        child.terminate();
        QVERIFY(!resultOf(child.waitForExit(Clock::now() + 50ms)));
        child.kill();
        QVERIFY(resultOf(child.waitForExit()));
        QCOMPARE(child.status(), SIGKILL);
    }

    void signalsNobodyOnceReaped()
    {
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 3"_s));
        QVERIFY(resultOf(child.waitForExit()));
        child.terminate();
        child.kill();
        QVERIFY(!child.running());
        QCOMPARE(child.status(), 3);
    }

    void killsAndReapsWhenDestroyed()
    {
        pid_t pid = -1;
        {
            const ChildProcess child = ChildProcess::launch(standInThat(u"ignore TERM sleep 60"_s));
            pid = child.pid();
            QVERIFY(child.running());
        }
        QCOMPARE(stateOf(pid), QByteArray());
    }

    void killsWhatIsReplacedByAssignment()
    {
        ChildProcess child = ChildProcess::launch(standInThat(u"sleep 60"_s));
        const pid_t first = child.pid();
        child = ChildProcess::launch(standInThat(u"sleep 60"_s));
        QCOMPARE(stateOf(first), QByteArray());
        QVERIFY(child.running());
        ChildProcess moved = std::move(child);
        QVERIFY(moved.running());
    }

    void abandonedChildRunsOnAndIsReaped()
    {
        pid_t pid = -1;
        {
            ChildProcess child = ChildProcess::launch(standInThat(u"sleep 60"_s));
            pid = child.pid();
            child.abandon();
            QVERIFY(!child.running());
            QCOMPARE(child.status(), std::nullopt);
            child.kill();
            child.abandon();
            QVERIFY(resultOf(child.waitForExit()));
        }
        QTRY_COMPARE(stateOf(pid), "S");
        QCOMPARE(::kill(pid, SIGKILL), 0);
        QTRY_COMPARE(stateOf(pid), QByteArray());
    }

    void abandoningAnEndedChildReapsIt()
    {
        ChildProcess child = ChildProcess::launch(standInThat(u"exit 0"_s));
        QTRY_COMPARE(stateOf(child.pid()), "Z");
        child.abandon();
        QCOMPARE(stateOf(child.pid()), QByteArray());
        QCOMPARE(child.status(), 0);
    }

    void reportsExitOnceFromTheEventLoop()
    {
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 4"_s));
        QList<qint32> reports;
        child.onExit(this, [&](qint32 status) {
            QCOMPARE(QThread::currentThread(), thread());
            reports << status;
        });
        QCOMPARE(reports, QList<qint32>());
        QTRY_COMPARE(reports, QList<qint32>{4});
        QTest::qWait(120);
        QCOMPARE(reports, QList<qint32>{4});
    }

    void reportsExitThatHasAlreadyBeenSeen()
    {
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 4"_s));
        QVERIFY(resultOf(child.waitForExit()));
        QList<qint32> reports;
        child.onExit(this, [&](qint32 status) { reports << status; });
        QCOMPARE(reports, QList<qint32>());
        QTRY_COMPARE(reports, QList<qint32>{4});
    }

    void reportsToEveryoneWhoAsked()
    {
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 4"_s));
        QList<qint32> reports;
        child.onExit(this, [&](qint32 status) { reports << status; });
        child.onExit(this, [&](qint32 status) { reports << status; });
        QVERIFY(resultOf(child.waitForExit()));
        QTRY_COMPARE(reports, QList<qint32>({4, 4}));
    }

    void reportMayDestroyChildAndContext()
    {
        auto child = std::make_unique<ChildProcess>(ChildProcess::launch(standInThat(u"exit 4"_s)));
        auto context = std::make_unique<QObject>();
        QList<qint32> reports;
        child->onExit(context.get(), [&](qint32 status) {
            reports << status;
            child.reset();
            context.reset();
        });
        QTRY_COMPARE(reports, QList<qint32>{4});
    }

    void reportsNothingOnceContextOrChildIsGone()
    {
        bool reported = false;
        const auto report = [&](qint32) { reported = true; };
        auto context = std::make_unique<QObject>();
        const ChildProcess first = ChildProcess::launch(standInThat(u"sleep 60"_s));
        first.onExit(context.get(), report);
        context.reset();
        first.kill();
        QVERIFY(resultOf(first.waitForExit()));
        {
            ChildProcess second = ChildProcess::launch(standInThat(u"sleep 60"_s));
            second.onExit(this, report);
            second.abandon();
            QCOMPARE(::kill(second.pid(), SIGKILL), 0);
        }
        QTest::qWait(120);
        QVERIFY(!reported);
    }

    void worksWhenSigchldWasIgnored()
    {
        const auto previous = std::signal(SIGCHLD, SIG_IGN);
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 6"_s));
        QVERIFY(resultOf(child.waitForExit()));
        std::signal(SIGCHLD, previous);
        QCOMPARE(child.status(), 6);
    }

private:
    template <typename Action>
    static QString failureIn(const Action &action)
    {
        try {
            action();
        } catch (const std::exception &error) {
            return describe(error);
        }
        return {};
    }

    QByteArray contents(const QString &name) const
    {
        QFile file(m_home->filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
    }

    /// A file that a child creates once it is ready to be tested.
    QString ready() const { return m_home->filePath(u"ready"_s); }

    /// What a child that reports was given.
    QJsonObject report(ChildDescription description) const
    {
        {
            const Descriptor output = openFile(m_home->filePath(u"report"_s), O_WRONLY | O_CLOEXEC);
            description.standardOutput = StandardStream::from(output.get());
            const ChildProcess child = ChildProcess::launch(description);
            resultOf(child.waitForExit());
        }
        return QJsonDocument::fromJson(contents(u"report"_s)).object();
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<ProcessCensus> m_census;
};

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
