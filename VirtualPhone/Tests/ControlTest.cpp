// Control commands and faults, and the program `virtual-phone` as scripts start it.
#include "Control/Faults.h"
#include "VirtualPhone.h"
#include "WireHost.h"

#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda::phone;
using varda::PhoneOptions;
using varda::VirtualPhone;

namespace {

constexpr int guard = 10'000; // milliseconds

/// The next line that the program prints, without its line feed; empty when none comes.
QByteArray readLine(QProcess &process)
{
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(guard))
            return {};
    }
    return process.readLine().trimmed();
}

void start(QProcess &process, const QStringList &arguments)
{
    process.start(QStringLiteral(VIRTUAL_PHONE_PROGRAM), arguments);
}

} // namespace

class ControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repliesInOneLine_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("reply");
        QTest::newRow("state") << u"state"_s << u"ok device"_s;
        QTest::newRow("change of state") << u"state recovery"_s << u"ok"_s;
        QTest::newRow("unknown state") << u"state sleeping"_s << u"error: no such state"_s;
        QTest::newRow("drop") << u"drop"_s << u"ok 0"_s;
        QTest::newRow("fault") << u"on 'pm list' output 'package:x\\n'"_s << u"ok"_s;
        QTest::newRow("unknown fault") << u"on pm explode"_s << u"error: no such action: explode"_s;
        QTest::newRow("number without a number") << u"on pm drop soon"_s << u"error: no such action: drop soon"_s;
        QTest::newRow("negative latency") << u"latency -1"_s << u"error: milliseconds expected"_s;
        QTest::newRow("start of an unknown app") << u"start a.b"_s << u"error: not installed"_s;
        QTest::newRow("start") << u"start com.example.app"_s << u"ok 8437"_s;
        QTest::newRow("unknown command") << u"dance"_s << u"error: no such command: dance"_s;
        QTest::newRow("open quote") << u"state 'device"_s << u"error: no closing quote"_s;
        QTest::newRow("nothing") << QString() << u"error: one command per line"_s;
    }

    void repliesInOneLine()
    {
        QFETCH(QString, command);
        QFETCH(QString, reply);
        VirtualPhone phone;
        QCOMPARE(phone.command(command), reply);
    }

    void everyWordCountIsChecked()
    {
        VirtualPhone phone;
        QVERIFY(phone.command(u"install"_s).startsWith(u"error: usage"_s));
        QVERIFY(phone.command(u"drop now please"_s).startsWith(u"error: usage"_s));
    }

    void faultsOfOnePatternAddUp()
    {
        Faults faults;
        QCOMPARE(faults.add(u"pidof"_s, {u"output"_s, u"x\\n"_s}), QString());
        QCOMPARE(faults.add(u"pidof"_s, {u"exit"_s, u"3"_s}), QString());
        QCOMPARE(faults.add(u"pidof com.b"_s, {u"exit"_s, u"4"_s}), QString());
        const Fault first = faults.forService("shell,v2,raw:pidof com.a");
        QCOMPARE(first.output, std::optional<QByteArray>("x\n"));
        QCOMPARE(first.exitCode, std::optional(3));
        QCOMPARE(faults.forService("shell,v2,raw:pidof com.b").exitCode, std::optional(4));
        faults.remove(u"pidof"_s);
        QVERIFY(!faults.forService("shell,v2,raw:pidof com.a").replacesAnswer());
        QVERIFY(faults.forService("shell,v2,raw:pidof com.b").replacesAnswer());
    }

    void quotesInServiceNamesDoNotMatter()
    {
        Faults faults;
        QCOMPARE(faults.add(u"package install -r"_s, {u"hang"_s}), QString());
        QVERIFY(faults.forService("exec:cmd package 'install' '-r' -S 12").hang);
    }

    void refusesConnectionsAndTakesThemAgain()
    {
        VirtualPhone phone;
        QCOMPARE(phone.command(u"refuse on"_s), u"ok"_s);
        QVERIFY(!WireHost(phone.port()).greet());
        QCOMPARE(phone.command(u"refuse off"_s), u"ok"_s);
        QVERIFY(WireHost(phone.port()).greet());
    }

    void wrongOptionsAreReported()
    {
        PhoneOptions options;
        options.state = u"sleeping"_s;
        QVERIFY(!VirtualPhone(options).errorString().isEmpty());
        options = {};
        options.commands = {u"dance"_s};
        QVERIFY(!VirtualPhone(options).errorString().isEmpty());
        VirtualPhone first;
        options = {};
        options.port = first.port();
        QVERIFY(!VirtualPhone(options).errorString().isEmpty());
    }

    void programAnswersOnStandardOutputAndEndsWithItsInput()
    {
        QTemporaryDir folder;
        const QString log = folder.filePath(u"services.log"_s);
        QProcess program;
        start(program, {u"--until-stdin-closes"_s, u"--log"_s, log, u"--model"_s, u"Größe 3"_s});
        const QByteArray ready = readLine(program);
        QVERIFY2(ready.startsWith("ready 127.0.0.1:"), ready.constData());
        program.write("state\nstatus\n");
        QCOMPARE(readLine(program), QByteArray("ok device"));
        const QByteArray status = readLine(program);
        QVERIFY(status.startsWith("ok {"));
        const quint16 port = ready.mid(ready.indexOf(':') + 1).toUShort();
        QCOMPARE(QJsonDocument::fromJson(status.mid(3)).object().value(u"port"_s).toInt(), port);
        const std::optional<Packet> banner = WireHost(port).greet();
        QVERIFY(banner && banner->payload.contains("ro.product.model=Größe 3;"));
        program.closeWriteChannel();
        QVERIFY(program.waitForFinished(guard));
        QCOMPARE(program.exitCode(), 0);
        QFile file(log);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(file.readLine()).object().value(u"event"_s), QJsonValue(u"connected"_s));
    }

    void programEndsOnSignals_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
    }

    void programEndsOnSignals()
    {
        QFETCH(int, signal);
        QProcess program;
        start(program, {});
        QVERIFY(readLine(program).startsWith("ready "));
        ::kill(static_cast<pid_t>(program.processId()), signal);
        QVERIFY(program.waitForFinished(guard));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void programRefusesWrongOptions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("port") << QStringList{u"--port"_s, u"70000"_s};
        QTest::newRow("state") << QStringList{u"--state"_s, u"sleeping"_s};
        QTest::newRow("odd screen") << QStringList{u"--screen"_s, u"721x1600"_s};
        QTest::newRow("unknown option") << QStringList{u"--dance"_s};
        QTest::newRow("control command") << QStringList{u"--control"_s, u"dance"_s};
    }

    void programRefusesWrongOptions()
    {
        QFETCH(QStringList, arguments);
        QProcess program;
        start(program, arguments);
        QVERIFY(program.waitForFinished(guard));
        QVERIFY(program.exitCode() != 0);
        QVERIFY(!program.readAllStandardError().isEmpty());
    }
};

QTEST_GUILESS_MAIN(ControlTest)

#include "ControlTest.moc"
