// Watching, ending and leaving a child.
#include "VardaCore/ChildProcess.h"
#include "StandInChild.h"

#include "Support/CoreTest.h"
#include "Support/Wait.h"

#include <QThread>

#include <csignal>
#include <memory>
#include <type_traits>

using namespace varda;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

static_assert(std::is_nothrow_move_constructible_v<ChildProcess>);
static_assert(std::is_nothrow_move_assignable_v<ChildProcess>);
static_assert(!std::is_copy_constructible_v<ChildProcess>);

namespace {

using Clock = ChildProcess::Clock;

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

class ChildProcessTest : public CoreTest
{
    Q_OBJECT

private Q_SLOTS:
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

    void waitsUntilTheDeadlineOnly()
    {
        const LoopMonitor monitor;
        const ChildProcess child = ChildProcess::launch(standInThat(u"sleep 60"_s));
        QCoro::Task<bool> patient = child.waitForExit(Clock::now() + 1min);
        VERIFY_SOON(monitor.turns() > 10);
        QVERIFY(!resultOf(child.waitForExit(Clock::now() + 10ms)));
        QVERIFY(!patient.isReady());
        QVERIFY(child.running());
        QCOMPARE(child.status(), std::nullopt);
        // A deadline that has passed is no reason to suspend.
        QVERIFY(child.waitForExit(Clock::now()).isReady());
        child.kill();
        QVERIFY(resultOf(std::move(patient)));
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
        anotherChildEnds();
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
        anotherChildEnds();
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
    /// What was to be reported of the children before it has been reported by then.
    static void anotherChildEnds()
    {
        const ChildProcess child = ChildProcess::launch(standInThat(u"exit 0"_s));
        QVERIFY(resultOf(child.waitForExit()));
    }

    /// A file that a child creates once it is ready to be tested.
    QString ready() const { return m_home->filePath(u"ready"_s); }
};

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
