// Whole commands, from the launch to the last thing cleaned up.
#include "VardaCore/Android.h"

#include "Support/CoreTest.h"
#include "Support/FailureOf.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QThread>

#include <csignal>
#include <future>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include <unistd.h>

using namespace varda;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Seconds = std::chrono::duration<double>;

const QString timedOut = u"The Android command timed out. Check the phone connection and try again."_s;
const QString tooLarge = u"Command output was too large to display safely."_s;

/// Longer than any command here may take.
constexpr Seconds enough = 50s;

QCoro::Task<CommandResult> standInThat(const QStringList &arguments, const std::optional<QString> &input = std::nullopt,
                                       Seconds timeout = enough)
{
    return CommandRunner::run(standIn(), arguments, input, timeout);
}

/// Those that a report tells of, by number.
QStringList descriptors(const QHash<QString, QStringList> &report)
{
    QStringList held = report[u"descriptor"_s];
    held.sort();
    return held;
}

/// Delivers events, and sees which of their receivers are gone thereafter.
class EventFates final : public QObject
{
public:
    int delivered = 0;
    int destroyed = 0;

private:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() != QEvent::MetaCall)
            return false;
        const QPointer<QObject> watched(receiver);
        receiver->event(event);
        ++delivered;
        destroyed += watched ? 0 : 1;
        return true;
    }
};

} // namespace

class CommandRunnerTest : public CoreTest
{
    Q_OBJECT

private Q_SLOTS:
    void capturesStatusAndBothStreams()
    {
        const CommandResult result =
            resultOf(standInThat({u"output"_s, u"Gerät\n"_s, u"error"_s, u" 警告\r\n"_s, u"exit"_s, u"3"_s}));
        QCOMPARE(result.code, 3);
        QCOMPARE(result.data, u"Gerät\n"_s.toUtf8());
        QCOMPARE(result.error, u" 警告\r\n"_s);
    }

    void capturesNothingOfASilentChild()
    {
        const CommandResult result = resultOf(standInThat({}));
        QCOMPARE(result.code, 0);
        QCOMPARE(result.data, QByteArray());
        QCOMPARE(result.error, QString());
    }

    void givesTheSignalNumberOfAChildThatASignalEnded_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint32>("number");
        QTest::newRow("TERM") << u"TERM"_s << SIGTERM;
        QTest::newRow("KILL") << u"KILL"_s << SIGKILL;
        QTest::newRow("SEGV") << u"SEGV"_s << SIGSEGV;
    }
    void givesTheSignalNumberOfAChildThatASignalEnded()
    {
        QFETCH(QString, name);
        QFETCH(qint32, number);
        const CommandResult result = resultOf(standInThat({u"output"_s, u"before"_s, u"die-by"_s, name}));
        QCOMPARE(result.code, number);
        QCOMPARE(result.data, "before");
    }

    void repairsStandardErrorThatIsNotUtf8()
    {
        // The child copies its input, so bytes that no argument can carry come from a file.
        QFile script(m_home->filePath(u"script"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf 'a\\377b\\342\\202A' >&2\n");
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        const QStringList none;
        QCOMPARE(resultOf(CommandRunner::run(script.fileName(), none, std::nullopt, enough)).error,
                 u"a\uFFFDb\uFFFDA"_s);
    }

    void givesTheChildThreeStreamsAndItsOwnEnvironmentOnly()
    {
        const CommandResult result = resultOf(standInThat({u"report"_s, u"a b"_s, u"手机 \"$HOME\""_s}));
        auto report = readReport(result.data);
        QCOMPARE(report[u"argument"_s], QStringList({standIn(), u"report"_s, u"a b"_s, u"手机 \"$HOME\""_s}));
        const QStringList held = descriptors(report);
        QCOMPARE(held.size(), 3);
        QCOMPARE(held[0], u"0 /dev/null"_s);
        QVERIFY(held[1].endsWith(u"/stdout") && held[2].endsWith(u"/stderr"));
        QCOMPARE(report[u"directory"_s], QStringList(QDir::currentPath()));
        QStringList own;
        for (char **variable = environ; *variable; ++variable)
            own << QString::fromUtf8(*variable);
        QCOMPARE(report[u"variable"_s], own);
    }

    void givesInputAsAPipeThatIsTheOnlyOtherDifference()
    {
        const CommandResult result = resultOf(standInThat({u"copy-input"_s, u"report"_s}, u"x"_s));
        const QStringList held = descriptors(readReport(result.data.sliced(2)));
        QCOMPARE(held.size(), 3);
        QVERIFY(held[0].startsWith(u"0 pipe:"));
    }

    void writesInputWithOneLineFeedAdded_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QByteArray>("received");
        QTest::newRow("empty") << QString(u""_s) << "\n"_ba;
        QTest::newRow("pairing code") << u"123456"_s << "123456\n"_ba;
        QTest::newRow("already ends in one") << u"a\n"_s << "a\n\n"_ba;
        QTest::newRow("not ASCII") << u"Gerät 手机 📱"_s << u"Gerät 手机 📱\n"_s.toUtf8();
        QTest::newRow("NUL") << u"a"_s + QChar(0) << QByteArray("a\0\n", 3);
        QTest::newRow("fills the pipe") << QString(65535, u'x') << QByteArray(65535, 'x') + '\n';
        QTest::newRow("more than the pipe takes") << QString(5'000'000, u'y') << QByteArray(5'000'000, 'y') + '\n';
    }
    void writesInputWithOneLineFeedAdded()
    {
        QFETCH(QString, input);
        QFETCH(QByteArray, received);
        const CommandResult result = resultOf(standInThat({u"copy-input"_s}, input));
        QVERIFY(result.data == received);
        QCOMPARE(result.code, 0);
    }

    void countsTheTimeoutFromTheEndOfTheInput()
    {
        const LoopMonitor monitor;
        const CommandResult result =
            resultOf(standInThat({u"sleep"_s, u"2"_s, u"copy-input"_s}, QString(200'000, u'x'), 1.5s));
        QCOMPARE(result.data.size(), 200'001);
        QVERIFY(monitor.turns() > 10);
    }

    void failsReadablyWhenNobodyReadsTheInput()
    {
        const QString sentence = u"Cannot write to "_s + standIn() + u": Broken pipe"_s;
        const QString input(1'000'000, u'x');
        QCOMPARE(failureOf(standInThat({u"exit"_s, u"0"_s}, input)), sentence);
        QCOMPARE(failureOf(standInThat({u"sleep"_s, u"0.1"_s}, input)), sentence);
        // Nor does it matter what this process does with the signal.
        const auto previous = std::signal(SIGPIPE, SIG_IGN);
        const QString failure = failureOf(standInThat({u"sleep"_s, u"0.1"_s}, input));
        std::signal(SIGPIPE, previous);
        QCOMPARE(failure, sentence);
    }

    void leavesAChildThatRefusesItsInputToEndOnItsOwn()
    {
        const QString ended = m_home->filePath(u"ended"_s);
        const QStringList arguments = {u"close-input"_s, u"sleep"_s, u"0.3"_s, u"create-file"_s, ended};
        QVERIFY(failureOf(standInThat(arguments, QString(1'000'000, u'x'), 0s)).endsWith(u": Broken pipe"));
        QVERIFY(QDir::temp().isEmpty());
        QVERIFY(!QFile::exists(ended));
        VERIFY_SOON(QFile::exists(ended));
    }

    void writersThatWaitHoldUpNobody()
    {
        const QString go = m_home->filePath(u"go"_s);
        std::vector<QCoro::Task<CommandResult>> writers;
        for (int i = 0; i < 50; ++i)
            writers.push_back(standInThat({u"await-file"_s, go, u"copy-input"_s}, QString(200'000, u'x')));
        for (int i = 0; i < 20; ++i)
            QCOMPARE(resultOf(standInThat({u"output"_s, u"x"_s})).data, "x");
        for (const auto &writer : writers)
            QVERIFY(!writer.isReady());
        QFile file(go);
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (auto &writer : writers)
            QCOMPARE(resultOf(std::move(writer)).data.size(), 200'001);
    }

    void acceptsThirtyTwoMebibytesOfOutputAndNoByteMore()
    {
        const CommandResult result = resultOf(standInThat({u"flood-output"_s, u"33554432"_s}));
        QCOMPARE(result.data.size(), 33'554'432);
        QCOMPARE(failureOf(standInThat({u"flood-output"_s, u"33554433"_s})), tooLarge);
        QCOMPARE(failureOf(standInThat({u"flood-output"_s, u"33554433"_s, u"exit"_s, u"1"_s})), tooLarge);
    }

    void endsAChildAtItsTimeout_data()
    {
        QTest::addColumn<double>("timeout");
        QTest::newRow("short") << 0.05;
        QTest::newRow("zero") << 0.0;
        QTest::newRow("negative") << -1.0;
        QTest::newRow("least") << -std::numeric_limits<double>::infinity();
        QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
    }
    void endsAChildAtItsTimeout()
    {
        QFETCH(double, timeout);
        QCOMPARE(failureOf(standInThat({u"sleep"_s, u"60"_s}, std::nullopt, Seconds(timeout))), timedOut);
        QCOMPARE(failureOf(standInThat({u"sleep"_s, u"60"_s}, u"input"_s, Seconds(timeout))), timedOut);
    }

    void takesAnyLongTimeout_data()
    {
        QTest::addColumn<double>("timeout");
        QTest::newRow("a month") << 30.0 * 24 * 3600;
        QTest::newRow("ages") << 1e300;
        QTest::newRow("for ever") << std::numeric_limits<double>::infinity();
    }
    void takesAnyLongTimeout()
    {
        QFETCH(double, timeout);
        const QStringList arguments = {u"sleep"_s, u"0.02"_s, u"output"_s, u"x"_s};
        QCOMPARE(resultOf(standInThat(arguments, std::nullopt, Seconds(timeout))).data, "x");
    }

    void timesOutEvenAChildThatEndsWellWhenTerminated()
    {
        const QStringList arguments = {u"exit-on"_s, u"TERM"_s, u"0"_s, u"output"_s, u"Success"_s, u"sleep"_s, u"60"_s};
        QCOMPARE(failureOf(standInThat(arguments, std::nullopt, 0.2s)), timedOut);
    }

    void killsChildThatIgnoresTerminate()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        const QStringList arguments = {u"ignore"_s, u"TERM"_s, u"sleep"_s, u"60"_s};
        QCOMPARE(failureOf(standInThat(arguments, std::nullopt, 0.2s)), timedOut);
        // The grace is a promise to the child, not a measure of speed.
        QVERIFY(elapsed.elapsed() >= 500);
    }

    void saysWhyAProgramCannotBeLaunched()
    {
        const QStringList none;
        QCOMPARE(failureOf(CommandRunner::run(u"/missing/adb"_s, none, std::nullopt, enough)),
                 u"/missing/adb: No such file or directory"_s);
        QVERIFY(QDir::temp().isEmpty());
        QCOMPARE(failureOf(CommandRunner::run(m_home->path(), none, u"input"_s, enough)),
                 m_home->path() + u": Permission denied"_s);
        QVERIFY(QDir::temp().isEmpty());
    }

    void saysWhyItsDirectoryCannotBeMade()
    {
        qputenv("TMPDIR", QFile::encodeName(standIn()));
        const QString failure = failureOf(standInThat({}));
        qputenv("TMPDIR", QFile::encodeName(m_home->filePath(u"tmp"_s)));
        QVERIFY2(failure.startsWith(standIn()) && failure.endsWith(u": Not a directory"), qPrintable(failure));
    }

    void failsWhenOutputCannotBeReadBack()
    {
        const QString failure = failureOf(standInThat({u"output"_s, u"x"_s, u"unlink-output"_s}));
        QVERIFY2(failure.endsWith(u"/stdout: No such file or directory"), qPrintable(failure));
    }

    void hasNoErrorTextWhenStandardErrorCannotBeReadBack()
    {
        const CommandResult result =
            resultOf(standInThat({u"output"_s, u"x"_s, u"error"_s, u"y"_s, u"unlink-error"_s, u"exit"_s, u"2"_s}));
        QCOMPARE(result.code, 2);
        QCOMPARE(result.data, "x");
        QCOMPARE(result.error, QString());
    }

    void waitsForAChildThatHasClosedItsStreams()
    {
        const QStringList arguments = {u"output"_s, u"x"_s, u"close-streams"_s, u"sleep"_s, u"0.1"_s,
                                       u"exit"_s,   u"5"_s};
        const CommandResult result = resultOf(standInThat(arguments));
        QCOMPARE(result.code, 5);
        QCOMPARE(result.data, "x");
    }

    void waitsForTheDirectChildOnly()
    {
        // The second process holds both streams, as adb's server does when the first adb command starts it.
        const CommandResult result = resultOf(standInThat({u"leave-behind"_s, u"60"_s, u"/dev/null"_s}));
        QCOMPARE(result.code, 0);
        const pid_t left = result.data.trimmed().toInt();
        QVERIFY(left > 0);
        QCOMPARE(::kill(left, 0), 0);
        QVERIFY(QDir::temp().isEmpty());
        QCOMPARE(::kill(left, SIGKILL), 0);
    }

    void leavesWhatTheChildStartedAliveAtATimeout()
    {
        const QString note = m_home->filePath(u"note"_s);
        const QStringList arguments = {u"leave-behind"_s, u"3"_s, note, u"sleep"_s, u"60"_s};
        QCOMPARE(failureOf(standInThat(arguments, std::nullopt, 0.5s)), timedOut);
        QVERIFY(!QFile::exists(note));
        VERIFY_SOON(QFile::exists(note));
    }

    void runsManyCommandsAtOnce()
    {
        std::vector<QCoro::Task<CommandResult>> tasks;
        for (int i = 0; i < 200; ++i)
            tasks.push_back(standInThat({u"sleep"_s, u"0.2"_s, u"copy-input"_s}, QString::number(i)));
        int i = 0;
        for (auto &task : tasks)
            QCOMPARE(resultOf(std::move(task)).data, QByteArray::number(i++) + '\n');
    }

    void usesADirectoryPerCommand()
    {
        const QStringList arguments = {u"sleep"_s, u"0.3"_s, u"report"_s};
        auto first = standInThat(arguments);
        auto second = standInThat(arguments);
        QTRY_COMPARE(QDir::temp().entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
        const auto output = [](const CommandResult &result) { return descriptors(readReport(result.data)).value(1); };
        const QString firstOutput = output(resultOf(std::move(first)));
        const QString secondOutput = output(resultOf(std::move(second)));
        QVERIFY(firstOutput.startsWith(u"1 "_s + QDir::tempPath() + u"/varda-"_s));
        QVERIFY(firstOutput != secondOutput);
    }

    void isNotShortenedByDroppingItsTask()
    {
        const QString ended = m_home->filePath(u"ended"_s);
        {
            const auto task = standInThat({u"sleep"_s, u"0.2"_s, u"create-file"_s, ended});
            QVERIFY(!task.isReady());
        }
        VERIFY_SOON(QFile::exists(ended));
        VERIFY_SOON(QDir::temp().isEmpty());
    }

    void resultArrivesOnTheCallersThread()
    {
        QThread *resumedOn = nullptr;
        const auto caller = [](QThread **resumed) -> QCoro::Task<> {
            const QStringList arguments(u"exit"_s);
            co_await CommandRunner::run(standIn(), QStringList{} << arguments << u"0"_s, std::nullopt, enough);
            *resumed = QThread::currentThread();
        };
        resultOf(caller(&resumedOn));
        QCOMPARE(resumedOn, QThread::currentThread());

        std::promise<void> resumed;
        std::unique_ptr<QThread> other(QThread::create([&] {
            resultOf(caller(&resumedOn));
            resumed.set_value();
        }));
        other->start();
        QCOMPARE(resumed.get_future().wait_for(guardTime), std::future_status::ready);
        QVERIFY(other->wait(30s));
        QCOMPARE(resumedOn, other.get());
    }

    void takesTheEnvironmentOfTheMomentOfTheCall()
    {
        qputenv("VARDA_TEST_MOMENT", "call");
        // More than there are workers, so that the last are launched a while after the call.
        std::vector<QCoro::Task<CommandResult>> tasks;
        for (int i = 0; i < 40; ++i)
            tasks.push_back(standInThat({u"report"_s}));
        const QByteArray temporary = qgetenv("TMPDIR");
        qputenv("VARDA_TEST_MOMENT", "later");
        qputenv("TMPDIR", "/missing");
        QStringList moments;
        QStringList outputs;
        for (auto &task : tasks) {
            const auto report = readReport(resultOf(std::move(task)).data);
            moments += report[u"variable"_s].filter(u"VARDA_TEST_MOMENT"_s);
            outputs += descriptors(report).value(1);
        }
        qunsetenv("VARDA_TEST_MOMENT");
        qputenv("TMPDIR", temporary);
        QCOMPARE(moments, QStringList(40, u"VARDA_TEST_MOMENT=call"_s));
        for (const QString &output : outputs)
            QVERIFY2(output.startsWith(u"1 "_s + QFile::decodeName(temporary)), qPrintable(output));
    }

    void destroysNoObjectInsideItsOwnEvent()
    {
        EventFates fates;
        qApp->installEventFilter(&fates);
        resultOf(standInThat({u"copy-input"_s}, u"x"_s));
        QVERIFY(fates.delivered > 0);
        QCOMPARE(fates.destroyed, 0);
    }
};

QTEST_GUILESS_MAIN(CommandRunnerTest)
#include "CommandRunnerTest.moc"
