// Every system call that one command needs fails in turn: the caller learns of it in a sentence, or is not harmed, and
// nothing is left behind.
#include "Interposition.h"

#include "Support/ProcessCensus.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"
#include "VardaCore/CommandRunner.h"
#include "VardaCore/ToolError.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda;
using namespace varda::test;

namespace {

/// What becomes of one command.
struct Ending
{
    std::optional<CommandResult> result;
    QString error;
};

Ending run(const QStringList &arguments, const std::optional<QString> &input)
{
    try {
        return {resultOf(CommandRunner::run(standIn(), arguments, input, 60s)), {}};
    } catch (const std::exception &failure) {
        return {std::nullopt, describe(failure)};
    }
}

/// Reads its input, writes to both streams.
Ending runCommand()
{
    return run({u"copy-input"_s, u"error"_s, u"complaint"_s}, u"input"_s);
}

} // namespace

class RunnerFaultsTest : public QObject
{
    Q_OBJECT

    enum Outcome { Fails, Unharmed, WithoutErrorText };

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", QFile::encodeName(m_temporary.path()));
        runCommand(); // the worker threads that a first command starts are no newcomers
    }

    void init() { m_census.emplace(); }

    void cleanup()
    {
        clearFault();
        QCOMPARE(m_census->leftovers(), QString());
    }

    void failedCallIsToldAndLeavesNothing_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("error");
        QTest::addColumn<Outcome>("outcome");
        const auto row = [](const char *name, Call call, int index, int error, Outcome outcome) {
            QTest::addRow("%s: %s", name, strerrorname_np(error)) << call << index << error << outcome;
        };
        for (const int error : {ENOSPC, EACCES, EROFS, EEXIST})
            row("making the directory", Call::MakeDirectory, 0, error, Fails);
        row("protecting the directory", Call::ChangeMode, 0, EPERM, Fails);
        row("protecting the output file", Call::ChangeMode, 1, EPERM, Fails);
        row("protecting the error file", Call::ChangeMode, 2, EPERM, Fails);
        for (const int error : {EMFILE, ENFILE, ENOSPC, EEXIST}) {
            row("creating the output file", Call::Open, 0, error, Fails);
            row("creating the error file", Call::Open, 1, error, Fails);
        }
        for (const int error : {EMFILE, ENFILE})
            row("making the pipe", Call::Pipe, 0, error, Fails);
        for (const int index : {0, 1, 2})
            row(qPrintable(u"handing on stream %1"_s.arg(index)), Call::Duplicate, index, EMFILE, Fails);
        for (const int error : {EAGAIN, ENOMEM, ENOENT, EACCES, ENOEXEC, E2BIG})
            row("launching", Call::Spawn, 0, error, Fails);
        for (const int error : {ENOSYS, EMFILE, EPERM})
            row("watching the child", Call::OpenPidfd, 0, error, Unharmed);
        for (const int error : {EINTR, EAGAIN})
            row("writing the input", Call::Write, 0, error, Unharmed);
        row("waiting for the child", Call::Wait, 0, EINTR, Unharmed);
        row("measuring the output", Call::Inspect, 0, EIO, Unharmed);
        row("opening the output", Call::Open, 2, EMFILE, Fails);
        row("measuring the open output", Call::Inspect, 1, EIO, Fails);
        row("reading the output", Call::Read, 0, EINTR, Unharmed);
        row("reading the output", Call::Read, 0, EIO, Fails);
        row("opening the error text", Call::Open, 3, EMFILE, WithoutErrorText);
        row("measuring the error text", Call::Inspect, 2, EIO, WithoutErrorText);
        row("reading the error text", Call::Read, 1, EINTR, Unharmed);
        row("reading the error text", Call::Read, 1, EIO, WithoutErrorText);
    }
    void failedCallIsToldAndLeavesNothing()
    {
        QFETCH(Call, call);
        QFETCH(int, index);
        QFETCH(int, error);
        QFETCH(Outcome, outcome);
        injectFault(call, error, index);
        const Ending ending = runCommand();
        QCOMPARE(clearFault(), 1);
        QCOMPARE(ending.result.has_value(), outcome != Fails);
        if (outcome == Fails) {
            QVERIFY2(ending.error.endsWith(u": "_s + QString::fromUtf8(strerror(error))), qPrintable(ending.error));
        } else {
            QCOMPARE(ending.result->code, 0);
            QCOMPARE(ending.result->data, "input\n"_ba);
            QCOMPARE(ending.result->error, outcome == Unharmed ? u"complaint"_s : QString());
        }
        QCOMPARE(runCommand().result->data, "input\n"_ba);
    }

    void unwritableInputIsToldAndTheChildEndsOnItsOwn_data()
    {
        QTest::addColumn<int>("error");
        for (const int error : {EPIPE, EIO})
            QTest::newRow(strerrorname_np(error)) << error;
    }
    void unwritableInputIsToldAndTheChildEndsOnItsOwn()
    {
        QFETCH(int, error);
        injectFault(Call::Write, error);
        const Ending ending = runCommand();
        QVERIFY(!ending.result);
        QCOMPARE(ending.error, u"Cannot write to "_s + standIn() + u": "_s + QString::fromUtf8(strerror(error)));
    }

    void directoryThatCannotBeRemovedIsAllThatStays()
    {
        injectFault(Call::Remove, EIO, 0, 1000);
        QCOMPARE(runCommand().result->data, "input\n"_ba);
        QVERIFY(clearFault() > 0);
        const QStringList stray = m_census->newcomers();
        QCOMPARE(stray.size(), 1);
        QVERIFY(stray.first().startsWith(u"directory varda-"_s));
        QVERIFY(QDir(m_temporary.filePath(stray.first().section(u' ', 1))).removeRecursively());
    }

    /// The rows above name every call that a command makes: were there one more, it would have no row.
    void everyCallOfACommandHasItsFault()
    {
        countCalls();
        QVERIFY(runCommand().result);
        QCOMPARE(callsMade(Call::MakeDirectory), 1);
        QCOMPARE(callsMade(Call::ChangeMode), 3);
        QCOMPARE(callsMade(Call::Open), 4);
        QCOMPARE(callsMade(Call::Pipe), 1);
        QCOMPARE(callsMade(Call::Duplicate), 3);
        QCOMPARE(callsMade(Call::Spawn), 1);
        QCOMPARE(callsMade(Call::OpenPidfd), 1);
        QCOMPARE(callsMade(Call::Write), 1);
        QCOMPARE(callsMade(Call::Inspect), 3);
        QCOMPARE(callsMade(Call::Read), 2);
        QVERIFY(callsMade(Call::Wait) >= 1);
        QVERIFY(callsMade(Call::Remove) >= 1);
    }

    /// While the tool runs, nothing is asked of a disk, which may hang: the time-out depends on nobody.
    void runningToolIsLeftAlone()
    {
        countCalls();
        const Ending ending = run({u"sleep"_s, u"0.6"_s}, std::nullopt);
        QVERIFY(ending.result);
        QCOMPARE(callsMade(Call::Inspect), 3); // all when it has ended
        QCOMPARE(callsMade(Call::Open), 4);
    }

    /// What the window waits for is a matter of who makes the calls, not of how long they take today.
    void windowsThreadLeavesEveryCallThatCanBlockToWorkers()
    {
        countCalls();
        QVERIFY(runCommand().result);
        for (const Call call : {Call::MakeDirectory, Call::ChangeMode, Call::Open, Call::Inspect, Call::Pipe,
                                Call::Duplicate, Call::Spawn, Call::Write, Call::Read, Call::Remove})
            QVERIFY2(callsMadeByMainThread(call) == 0, qPrintable(QString::number(int(call))));
    }

private:
    QTemporaryDir m_temporary;
    std::optional<ProcessCensus> m_census;
};

QTEST_GUILESS_MAIN(RunnerFaultsTest)
#include "RunnerFaultsTest.moc"
