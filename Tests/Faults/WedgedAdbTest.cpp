// An adb that is stuck or gone wild: the event loop keeps turning, and the command ends as it should.
#include "Support/ProcessCensus.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"
#include "VardaCore/CommandRunner.h"
#include "VardaCore/ToolError.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda;

namespace {

const QString timeOut = u"The Android command timed out. Check the phone connection and try again."_s;

struct Ending
{
    std::optional<CommandResult> result;
    QString error;
    bool ended = false;
};

QCoro::Task<> run(QStringList arguments, std::chrono::duration<double> timeout, Ending *ending)
{
    try {
        ending->result = co_await CommandRunner::run(standIn(), arguments, std::nullopt, timeout);
    } catch (const std::exception &failure) {
        ending->error = describe(failure);
    }
    ending->ended = true;
}

} // namespace

class WedgedAdbTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TMPDIR", QFile::encodeName(m_temporary.path())); }
    void init() { m_census.emplace(); }
    void cleanup() { QCOMPARE(m_census->leftovers(), QString()); }

    void stuckToolEndsAtItsTimeout_data()
    {
        QTest::addColumn<QStringList>("behaviour");
        QTest::newRow("hangs at once") << QStringList{u"sleep"_s, u"60"_s};
        QTest::newRow("hangs after its output") << QStringList{u"output"_s, u"Success"_s, u"sleep"_s, u"60"_s};
        QTest::newRow("ignores SIGTERM") << QStringList{u"ignore"_s, u"TERM"_s, u"sleep"_s, u"60"_s};
        QTest::newRow("closes its streams and stays") << QStringList{u"close-streams"_s, u"sleep"_s, u"60"_s};
        QTest::newRow("floods its output") << QStringList{u"flood-output"_s, u"1000000000000"_s};
        QTest::newRow("floods its error text") << QStringList{u"flood-error"_s, u"1000000000000"_s};
        QTest::newRow("floods and ignores SIGTERM")
            << QStringList{u"ignore"_s, u"TERM"_s, u"flood-output"_s, u"1000000000000"_s};
    }
    void stuckToolEndsAtItsTimeout()
    {
        QFETCH(QStringList, behaviour);
        Ending ending;
        run(behaviour, 200ms, &ending);
        VERIFY_SOON(ending.ended);
        QCOMPARE(ending.error, timeOut);
    }

    void loopTurnsWhileAToolIsStuck_data() { stuckToolEndsAtItsTimeout_data(); }
    void loopTurnsWhileAToolIsStuck()
    {
        QFETCH(QStringList, behaviour);
        Ending ending;
        const LoopMonitor monitor;
        run(behaviour, 1min, &ending);
        VERIFY_SOON(monitor.turns() >= 10);
        QVERIFY(!ending.ended);
        endTool(SIGKILL, &ending);
    }

    void floodOfOutputIsRefusedOnceItEnds()
    {
        Ending ending;
        flood(u"flood-output"_s, &ending);
        QVERIFY(!ending.ended);
        endTool(SIGTERM, &ending);
        QCOMPARE(ending.error, u"Command output was too large to display safely."_s);
    }

    void floodOfErrorTextIsKeptWhole()
    {
        Ending ending;
        flood(u"flood-error"_s, &ending);
        endTool(SIGTERM, &ending);
        QCOMPARE(ending.result->data, "more"_ba);
        QCOMPARE(ending.result->error.size(), floodSize + 4);
        QCOMPARE(ending.result->error.count(u'x'), floodSize);
    }

private:
    static constexpr qint64 floodSize = 320LL * 1024 * 1024;

    /// Starts a tool that floods one of its streams, then adds "more" to both and stays; returns when it has written.
    void flood(const QString &behaviour, Ending *ending)
    {
        const QString written = m_temporary.filePath(u"written"_s);
        run({behaviour, QString::number(floodSize), u"output"_s, u"more"_s, u"error"_s, u"more"_s, u"create-file"_s,
             written, u"exit-on"_s, u"TERM"_s, u"0"_s, u"sleep"_s, u"60"_s},
            60s, ending);
        VERIFY_SOON(QFile::exists(written));
        QVERIFY(QFile::remove(written));
    }

    void endTool(int signal, const Ending *ending)
    {
        const QStringList children = childProcesses();
        QCOMPARE(children.size(), 1);
        ::kill(children.first().toInt(), signal);
        VERIFY_SOON(ending->ended);
    }

    QTemporaryDir m_temporary;
    std::optional<ProcessCensus> m_census;
};

QTEST_GUILESS_MAIN(WedgedAdbTest)
#include "WedgedAdbTest.moc"
