// The program ends in order whenever it is told to: at any moment of any action it exits with 0, has removed its
// capture directories, and has asked the mirror to end. Under the sanitizers this is also the search for uses after the
// end.
#include "Support/Seeds.h"
#include "Support/StandInTools.h"
#include "Support/Wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda::test;

namespace {

constexpr int lives = 30;
constexpr int maxLife = 700; // ms
constexpr int maxGap = 25;   // ms, between two signals

/// A display that can be lost.
class Display
{
public:
    Display()
    {
        m_server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
        if (m_server.waitForReadyRead(varda::guardMilliseconds))
            m_name = u':' + QString::fromLatin1(m_server.readAllStandardOutput()).trimmed();
    }
    ~Display() { lose(); }
    Q_DISABLE_COPY_MOVE(Display)

    /// Empty where there is none.
    QString name() const { return m_name; }

    void lose()
    {
        m_server.kill();
        m_server.waitForFinished(varda::guardMilliseconds);
    }

private:
    QProcess m_server;
    QString m_name;
};

/// One run of the program, in a temporary directory of its own; on the X display of that name, if any.
class Life
{
public:
    explicit Life(quint32 seed, const QString &display = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, m_directory.path());
        environment.insert(u"HOME"_s, m_directory.path());
        environment.insert(u"XDG_RUNTIME_DIR"_s, m_directory.path());
        environment.insert(u"QT_QPA_PLATFORM"_s, display.isEmpty() ? u"offscreen"_s : u"xcb"_s);
        environment.insert(u"DISPLAY"_s, display);
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(m_directory.path());
        m_process.start(QCoreApplication::applicationDirPath() + u"/short-life"_s, {QString::number(seed)});
    }

    bool comesUp()
    {
        return m_process.waitForReadyRead(varda::guardMilliseconds) && m_process.readAllStandardOutput() == "up\n";
    }

    /// Does nothing once the program has ended.
    void signal(int number) const
    {
        if (const qint64 pid = m_process.processId(); pid > 0)
            ::kill(static_cast<pid_t>(pid), number);
    }
    bool ends()
    {
        return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(varda::guardMilliseconds);
    }

    /// How it ended, for a comparison that shows it.
    QString ending()
    {
        const QString how = m_process.exitStatus() == QProcess::NormalExit ? u"exit"_s : u"signal"_s;
        QStringList said = QString::fromUtf8(m_process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
        // What the offscreen platform cannot do.
        said.removeIf([](const QString &line) { return line.startsWith(u"This plugin does not support"_s); });
        return how + u" %1 "_s.arg(m_process.exitCode()) + said.join(u'\n');
    }

    QStringList captureDirectories() const
    {
        return QDir(m_directory.path()).entryList({u"varda-*"_s}, QDir::AllEntries | QDir::Hidden);
    }

private:
    QTemporaryDir m_directory;
    QProcess m_process;
};

} // namespace

class LifetimeTest : public QObject
{
    Q_OBJECT

private:
    void stage(std::chrono::milliseconds commandTime)
    {
        m_tools.emplace();
        m_tools->adb().onAnything().prints("Success\ncom.example.app/.Main\n").takes(commandTime);
        m_tools->adb().on({u"devices"_s, u"-l"_s}).prints("List of devices attached\nR58M42ABCDE\tdevice\n");
        m_tools->scrcpy().onAnything().hangs().exitsOnTermination(0);
    }

    std::optional<StandInTools> m_tools;

private Q_SLOTS:
    void cleanup() { m_tools.reset(); }

    void orderlyEndAtAnyMomentLeavesNothing_data() { addSeedRows(seedsFor(u"LifetimeTest"_s, lives)); }
    void orderlyEndAtAnyMomentLeavesNothing()
    {
        QFETCH(quint32, seed);
        const auto atEnd = qScopeGuard([] { tellHowToReplay(u"LifetimeTest"_s); });
        QRandomGenerator random(seed);
        stage(std::chrono::milliseconds(random.bounded(120)));
        Life life(seed);
        QVERIFY(life.comesUp());
        // The model starts after the first picture; half of the lives may end before.
        if (random.bounded(2) == 0)
            VERIFY_SOON(!m_tools->adb().calls().isEmpty());
        QTest::qWait(random.bounded(maxLife));
        static const QList<int> endings = {SIGTERM, SIGINT, SIGHUP};
        // Some of them come while it is ending already.
        for (int times = random.bounded(1, 5); times > 0; --times) {
            life.signal(endings[random.bounded(3)]);
            QTest::qWait(random.bounded(maxGap));
        }
        QVERIFY(life.ends());
        QCOMPARE(life.ending(), u"exit 0 "_s);
        QCOMPARE(life.captureDirectories(), QStringList());
        for (const ToolCall &mirror : m_tools->scrcpy().calls())
            QTRY_VERIFY(m_tools->scrcpy().calls(mirror.arguments()).last().ended);
    }

    void abruptEndLeavesTheFilesOfCommandsInFlightOnly()
    {
        stage(10s);
        Life life(1);
        QVERIFY(life.comesUp());
        // A listing is answered at once; any other command takes longer than this test.
        const auto isInFlight = [](const ToolCall &call) {
            return call.arguments() != QStringList{u"devices"_s, u"-l"_s};
        };
        const auto inFlight = [&] {
            const QList<ToolCall> calls = m_tools->adb().calls();
            return std::count_if(calls.begin(), calls.end(), isInFlight);
        };
        VERIFY_SOON(inFlight() > 0);
        life.signal(SIGKILL);
        QVERIFY(life.ends());
        const QStringList left = life.captureDirectories();
        // A listing may have been in flight beside an action and the console.
        QVERIFY2(left.size() >= 1 && left.size() <= 3, qPrintable(left.join(u' ')));
    }

    void lostDisplayEndsTheProgramAndLeavesNothing()
    {
        stage(300ms);
        Display display;
        QVERIFY2(!display.name().isEmpty(), "there is no Xvfb to be had");
        Life life(1, display.name());
        QVERIFY(life.comesUp());
        const auto mirrored = [&] {
            const QList<ToolCall> calls = m_tools->scrcpy().calls();
            return !calls.isEmpty() && !calls.last().ended;
        };
        VERIFY_SOON(mirrored() && !life.captureDirectories().isEmpty());
        display.lose();
        QVERIFY(life.ends());
        const QString ending = life.ending();
        QVERIFY2(ending.startsWith(u"exit 1 "_s),
                 qUtf8Printable(ending)); // after Qt's messages about the lost connection
        QCOMPARE(life.captureDirectories(), QStringList());
        QTRY_VERIFY(m_tools->scrcpy().calls().last().ended);
    }
};

QTEST_GUILESS_MAIN(LifetimeTest)
#include "LifetimeTest.moc"
