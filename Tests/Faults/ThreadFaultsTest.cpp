// A computer that has no threads to spare: the first command fails in a sentence instead of hanging, and a single
// worker does the work of all.
#include "Interposition.h"

#include "Support/FailureOf.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"
#include "VardaCore/CommandRunner.h"
#include "VardaCore/ToolError.h"

#include <QTest>

#include <cerrno>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda;
using namespace varda::test;

class ThreadFaultsTest : public QObject
{
    Q_OBJECT

private:
    static QCoro::Task<CommandResult> start() { return CommandRunner::run(standIn(), {u"copy-input"_s}, u"x"_s, 60s); }
    static void runTwentyAtOnce()
    {
        std::vector<QCoro::Task<CommandResult>> tasks;
        for (int i = 0; i < 20; ++i)
            tasks.push_back(start());
        for (QCoro::Task<CommandResult> &task : tasks)
            QCOMPARE(resultOf(std::move(task)).data, "x\n"_ba);
    }

private Q_SLOTS:
    /// The first of all commands, for the threads that there are stay.
    void commandWithoutAnyThreadFails()
    {
        injectFault(Call::CreateThread, EAGAIN, 0, 1000);
        const QString error = failureOf(start());
        QCOMPARE(clearFault(), 2); // asked for once more to clean up
        QCOMPARE(error, u"Cannot start a thread: Resource temporarily unavailable"_s);
    }

    void oneThreadDoesTheWorkOfAll()
    {
        injectFault(Call::CreateThread, EAGAIN, 1, 1000);
        runTwentyAtOnce();
        QVERIFY(clearFault() > 0);
    }

    void moreThreadsAreStartedWhenTheyCanBe()
    {
        countCalls();
        runTwentyAtOnce();
        QVERIFY(callsMade(Call::CreateThread) >= 1);
    }
};

QTEST_GUILESS_MAIN(ThreadFaultsTest)
#include "ThreadFaultsTest.moc"
