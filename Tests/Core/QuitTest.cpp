// What becomes of commands in flight when the program that runs them ends in order. They are played by quit-in-flight.
#include "Support/CoreTest.h"
#include "Support/StandIn.h"
#include "Support/Wait.h"

#include <QProcess>
#include <QRegularExpression>

#include <csignal>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace varda;
using namespace Qt::StringLiterals;

namespace {

/// While it lives, processes that a child of this one leaves behind become children of this one.
class Subreaper
{
public:
    Subreaper() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    Q_DISABLE_COPY_MOVE(Subreaper)
    ~Subreaper() { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }
};

} // namespace

class QuitTest : public CoreTest
{
    Q_OBJECT

private Q_SLOTS:
    void leavesNoFileWhenTheProgramEndsInBetween_data()
    {
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("leaveWhenThereIs");
        QTest::newRow("while the child runs") << u"1"_s << u"running"_s;
        QTest::newRow("while commands wait for a worker") << u"40"_s << u"."_s;
        QTest::newRow("while commands start and end") << u"20"_s << u"running"_s;
    }
    void leavesNoFileWhenTheProgramEndsInBetween()
    {
        QFETCH(QString, count);
        QFETCH(QString, leaveWhenThereIs);
        for (int times = 0; times < 5; ++times) {
            quitInFlight({count, u"60"_s, m_home->filePath(leaveWhenThereIs), standIn(), u"create-file"_s,
                          m_home->filePath(u"running"_s), u"flood-output"_s, u"4000000"_s, u"sleep"_s, u"0.02"_s});
            QVERIFY(QDir::temp().isEmpty());
            QFile::remove(m_home->filePath(u"running"_s));
        }
    }

    void commandOutlivesTheProgramByItsTimeoutAtMost_data()
    {
        QTest::addColumn<QString>("timeout");
        QTest::addColumn<QStringList>("behaviour");
        QTest::addColumn<QString>("ending");
        QTest::newRow("ends by itself") << u"60"_s << QStringList{u"await-file"_s, u"keeper found"_s} << u"exit 0"_s;
        QTest::newRow("hangs") << u"3"_s << QStringList{u"sleep"_s, u"60"_s} << u"signal 15"_s;
        QTest::newRow("ignores SIGTERM") << u"3"_s << QStringList{u"ignore"_s, u"TERM"_s, u"sleep"_s, u"60"_s}
                                         << u"signal 9"_s;
    }
    void commandOutlivesTheProgramByItsTimeoutAtMost()
    {
        QFETCH(QString, timeout);
        QFETCH(QStringList, behaviour);
        QFETCH(QString, ending);
        const QString keeperFound = m_home->filePath(u"keeper found"_s);
        behaviour.replaceInStrings(u"keeper found"_s, keeperFound);
        const Subreaper subreaper;
        const QString running = m_home->filePath(u"running"_s);
        // As adb's server does, what it leaves behind has to live on.
        quitInFlight(QStringList{u"1"_s, timeout, running, standIn(), u"leave-behind"_s, u"60"_s, u"/dev/null"_s,
                                 u"create-file"_s, running} +
                     behaviour);
        QTRY_VERIFY(childCalled(u"varda-keeper"_s) > 0);
        const pid_t keeper = childCalled(u"varda-keeper"_s);
        const pid_t command = childCalled(u"stand-in"_s);
        QVERIFY(command > 0);
        QVERIFY(QFile(keeperFound).open(QIODevice::WriteOnly));
        QCOMPARE(endingOf(command), ending);
        QCOMPARE(endingOf(keeper), u"exit 0"_s);
        const pid_t left = childCalled(u"stand-in"_s);
        QVERIFY(left > 0 && left != command);
        ::kill(left, SIGKILL);
        QCOMPARE(endingOf(left), u"signal 9"_s);
    }

    void keeperIsInNobodysWay()
    {
        const Subreaper subreaper;
        const QString running = m_home->filePath(u"running"_s);
        quitInFlight({u"1"_s, u"60"_s, running, standIn(), u"create-file"_s, running, u"sleep"_s, u"60"_s});
        QTRY_VERIFY(childCalled(u"varda-keeper"_s) > 0);
        const pid_t keeper = childCalled(u"varda-keeper"_s);
        const pid_t command = childCalled(u"stand-in"_s);
        QVERIFY(command > 0);
        const QString process = u"/proc/%1/"_s.arg(keeper);
        const auto holdings = [&] {
            return QDir(process + u"fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
        };
        QTRY_COMPARE(holdings(), QStringList(u"0"_s));
        QVERIFY(QFile::symLinkTarget(process + u"fd/0"_s).contains(QRegularExpression(u"pidfd|/proc/[0-9]+$"_s)));
        QCOMPARE(QFile::symLinkTarget(process + u"cwd"_s), u"/"_s);
        QCOMPARE(::getsid(keeper), keeper);
        ::kill(keeper, SIGTERM);
        QCOMPARE(endingOf(keeper), u"signal 15"_s);
        ::kill(command, SIGKILL);
        QCOMPARE(endingOf(command), u"signal 9"_s);
    }

private:
    /// Runs quit-in-flight to its end.
    static void quitInFlight(const QStringList &arguments)
    {
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(QStringLiteral(QUIT_IN_FLIGHT), arguments);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    /// The child of that name that this test has come to have; 0 if there is none.
    pid_t childCalled(const QString &name) const
    {
        return m_census->newcomers().filter(u'(' + name + u')').value(0).section(u' ', 1, 1).toInt();
    }

    /// Waits for the end of a child, and tells how it ended.
    static QString endingOf(pid_t child)
    {
        int status = 0;
        eventually([&] { return ::waitpid(child, &status, WNOHANG) != 0; });
        return WIFEXITED(status) ? u"exit %1"_s.arg(WEXITSTATUS(status)) : u"signal %1"_s.arg(WTERMSIG(status));
    }
};

QTEST_GUILESS_MAIN(QuitTest)
#include "QuitTest.moc"
