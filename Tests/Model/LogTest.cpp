// The log console: which log is read, what is shown of it, also if it comes late, and what turns the console off.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QCoroTask>

#include <functional>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString package = u"com.example.myapp"_s;
const QStringList deviceLog = logLine(u"R58M42ABCDE"_s);
const QStringList pidof{u"-s"_s, u"R58M42ABCDE"_s, u"shell"_s, u"pidof"_s, package};
const QString notRunning = u"This app is not running. Launch it to see its logs."_s;

QStringList logOf(const QString &pid)
{
    return deviceLog + QStringList{u"--pid"_s, pid};
}

} // namespace

class LogTest : public ModelTest
{
    Q_OBJECT

private:
    /// A ready phone, the console on, and a snapshot in it.
    void turnOn(const QString &typed = {})
    {
        model->packageName = typed;
        selectPhone();
        model->logs = u"before"_s;
        model->logging = true;
        writes->take();
    }

    void read() { QCoro::waitFor(model->readLogs()); }

    /// Has `change` happen while `command`, which a gate called "go" holds up, is in flight; the writes that this takes
    /// are not recorded.
    void readWhile(const QStringList &command, const std::function<void()> &change)
    {
        auto reading = model->readLogs();
        QVERIFY(called(adb(), command));
        change();
        writes->take();
        tools->open(u"go"_s);
        QCoro::waitFor(reading);
    }

    void selectAnother()
    {
        model->devices = {device(serial), device(u"other"_s)};
        model->selectedID = u"other"_s;
    }

private Q_SLOTS:
    void withoutAReadyPhoneItTurnsOffSilently_data()
    {
        QTest::addColumn<QString>("state");
        for (const QString &each : {u"none"_s, u"unplugged"_s, u"unauthorized"_s, u"offline"_s, u"no permissions"_s,
                                    u"recovery"_s, u"sideload"_s, u"bootloader"_s})
            QTest::newRow(qUtf8Printable(each)) << each;
    }
    void withoutAReadyPhoneItTurnsOffSilently()
    {
        QFETCH(QString, state);
        turnOn(u"not a package"_s);
        if (state == u"none")
            model->selectedID = std::nullopt;
        else if (state == u"unplugged")
            model->devices = {};
        else
            model->devices = {device(serial, state)};
        model->logs = u"before"_s;
        model->logging = true;
        writes->take();
        read();
        QCOMPARE(writes->take(), QStringList({u"logging=false"_s}));
        QCOMPARE(adb().calls().size(), 0);
    }

    void readsTheDeviceWideLog()
    {
        turnOn();
        adb().on(deviceLog).prints("line\n").complains("- waiting for nothing -\n");
        read();
        QCOMPARE(writes->take(), QStringList({u"logs=line\n"_s}));
        QVERIFY(model->logging());
    }

    void blankPackageReadsTheDeviceWideLog_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("blanks") << u"   "_s;
        QTest::newRow("line feeds and tabs") << u"\n\t\r\n"_s;
        QTest::newRow("no-break and other spaces") << u"\u00a0\u2003\u2028"_s;
    }
    void blankPackageReadsTheDeviceWideLog()
    {
        QFETCH(QString, typed);
        turnOn(typed);
        adb().on(deviceLog).prints("line\n");
        read();
        QCOMPARE(adb().commandLines(), QList({deviceLog}));
        QCOMPARE(model->logs(), u"line\n"_s);
    }

    void snapshotIsShownAsItIs_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QString>("console");
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("untrimmed") << QByteArray("\n  a \r\n\n") << u"\n  a \r\n\n"_s;
        QTest::newRow("ill-formed bytes, one mark per maximal part") << QByteArray("a\xff"
                                                                                   "b\xe2\x82"
                                                                                   "c\xf0\x9f\x92")
                                                                     << u"a\ufffdb\ufffdc\ufffd"_s;
        QTest::newRow("a byte-order mark and a NUL") << QByteArray("\xef\xbb\xbf"
                                                                   "a\0b",
                                                                   6)
                                                     << u"\ufeffa\0b"_s;
        QTest::newRow("non-ASCII") << QByteArray("größer 日本 👍\n") << u"größer 日本 👍\n"_s;
        QTest::newRow("more lines than asked for")
            << QByteArray("x\n").repeated(5000) << QString(u"x\n"_s).repeated(5000);
    }
    void snapshotIsShownAsItIs()
    {
        QFETCH(QByteArray, output);
        turnOn();
        adb().on(deviceLog).prints(output);
        read();
        QTEST(model->logs(), "console");
    }

    void snapshotReplacesTheOneBefore()
    {
        turnOn();
        adb().on(deviceLog).prints("two\n");
        adb().on(deviceLog).prints("one\n").once();
        read();
        read();
        QCOMPARE(writes->take(), QStringList({u"logs=one\n"_s, u"logs=two\n"_s}));
    }

    void packageIsUsedWithoutSurroundingWhiteSpace()
    {
        const QString typed = u"  com.example.myapp \n"_s;
        turnOn(typed);
        adb().on(pidof).prints("4711\n");
        adb().on(logOf(u"4711"_s)).prints("line\n");
        read();
        QCOMPARE(adb().commandLines(), QList({pidof, logOf(u"4711"_s)}));
        QCOMPARE(model->packageName(), typed);
    }

    void invalidPackageTurnsItOff_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString &typed : {u"single"_s, u"com.example;reboot"_s, u"com.example myapp"_s, u"-s"_s,
                                     u"com.éxample.app"_s, u"com.example\n.app"_s})
            QTest::newRow(qUtf8Printable(typed)) << typed;
    }
    void invalidPackageTurnsItOff()
    {
        QFETCH(QString, typed);
        turnOn(typed);
        read();
        QCOMPARE(writes->take(),
                 QStringList({u"logging=false"_s,
                              u"error=Enter a valid package ID or leave it blank for device-wide logs."_s}));
        QCOMPARE(adb().calls().size(), 0);
    }

    void filtersByTheFirstProcess_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("pid");
        QTest::newRow("one") << QByteArray("4711\n") << 0 << u"4711"_s;
        QTest::newRow("two") << QByteArray("4711 815\n") << 0 << u"4711"_s;
        QTest::newRow("with CR LF") << QByteArray("4711\r\n") << 0 << u"4711"_s;
        QTest::newRow("after white space") << QByteArray("\n\t 4711\n") << 0 << u"4711"_s;
        QTest::newRow("one per line") << QByteArray("12\n34\n") << 0 << u"12"_s;
        QTest::newRow("with a failed exit status") << QByteArray("4711\n") << 1 << u"4711"_s;
        QTest::newRow("before a word") << QByteArray("4711 gone\n") << 0 << u"4711"_s;
    }
    void filtersByTheFirstProcess()
    {
        QFETCH(QByteArray, output);
        QFETCH(int, exitCode);
        QFETCH(QString, pid);
        turnOn(package);
        adb().on(pidof).prints(output).exits(exitCode);
        adb().on(logOf(pid)).prints("line\n");
        read();
        QCOMPARE(writes->take(), QStringList({u"logs=line\n"_s}));
        QCOMPARE(adb().commandLines(), QList({pidof, logOf(pid)}));
    }

    void appThatDoesNotRunIsSaidSoAndItStaysOn_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("nothing, exit 1") << QByteArray() << QByteArray() << 1;
        QTest::newRow("nothing, exit 0: the phone vanished") << QByteArray() << QByteArray() << 0;
        QTest::newRow("white space") << QByteArray(" \r\n") << QByteArray() << 0;
        QTest::newRow("a word") << QByteArray("pidof: not found\n") << QByteArray() << 127;
        QTest::newRow("a word before a number") << QByteArray("x 4711\n") << QByteArray() << 0;
        QTest::newRow("a negative number") << QByteArray("-1\n") << QByteArray() << 0;
        QTest::newRow("an option") << QByteArray("--help\n") << QByteArray() << 0;
        QTest::newRow("digits and letters") << QByteArray("47a\n") << QByteArray() << 0;
        QTest::newRow("only a complaint") << QByteArray() << QByteArray("adb: device offline\n") << 1;
        QTest::newRow("ill-formed bytes") << QByteArray("\xff\n") << QByteArray() << 0;
    }
    void appThatDoesNotRunIsSaidSoAndItStaysOn()
    {
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, complaint);
        QFETCH(int, exitCode);
        turnOn(package);
        adb().on(pidof).prints(output).complains(complaint).exits(exitCode);
        read();
        QCOMPARE(writes->take(), QStringList({u"logs="_s + notRunning}));
        QVERIFY(model->logging());
        QCOMPARE(adb().commandLines(), QList({pidof}));
    }

    void appLaunchedLaterIsFollowedByTheNextRead()
    {
        turnOn(package);
        adb().on(pidof).prints("99\n");
        adb().on(pidof).prints("42\n").once();
        adb().on(pidof).exits(1).once();
        adb().on(logOf(u"42"_s)).prints("first run\n");
        adb().on(logOf(u"99"_s)).prints("second run\n");
        read();
        read();
        read();
        QCOMPARE(writes->take(), QStringList({u"logs="_s + notRunning, u"logs=first run\n"_s, u"logs=second run\n"_s}));
    }

    void failedLogTurnsItOffAndKeepsTheSnapshot_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QString>("error");
        QTest::newRow("device-wide") << QString() << QByteArray("partial\n") << QByteArray("error: device offline\n")
                                     << u"error: device offline\n"_s;
        QTest::newRow("of an app") << package << QByteArray() << QByteArray("error: closed") << u"error: closed"_s;
        QTest::newRow("with words on standard output only")
            << QString() << QByteArray("partial\n") << QByteArray() << u"partial\n"_s;
        QTest::newRow("without words") << QString() << QByteArray() << QByteArray() << QString();
    }
    void failedLogTurnsItOffAndKeepsTheSnapshot()
    {
        QFETCH(QString, typed);
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, complaint);
        QFETCH(QString, error);
        turnOn(typed);
        adb().on(pidof).prints("4711\n");
        adb().on(typed.isEmpty() ? deviceLog : logOf(u"4711"_s)).prints(output).complains(complaint).exits(1);
        read();
        QCOMPARE(writes->take(), QStringList({u"logging=false"_s, u"error="_s + error}));
        QCOMPARE(model->logs(), u"before"_s);
    }

    void leavesBusyAndStatusAlone()
    {
        turnOn();
        model->busy = true;
        model->status = u"working"_s;
        writes->take();
        adb().on(deviceLog).prints("line\n");
        read();
        QCOMPARE(writes->take(), QStringList({u"logs=line\n"_s}));
        model->busy = false;
    }

    void lateSnapshotOfAnotherSelectionIsDropped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("pidofOutput");
        QTest::newRow("device-wide") << QString() << QByteArray();
        QTest::newRow("of an app") << package << QByteArray("4711\n");
        QTest::newRow("the notice that the app does not run") << package << QByteArray();
    }
    void lateSnapshotOfAnotherSelectionIsDropped()
    {
        QFETCH(QString, typed);
        QFETCH(QByteArray, pidofOutput);
        turnOn(typed);
        adb().on(pidof).waitsFor(u"go"_s).prints(pidofOutput);
        adb().on(logOf(u"4711"_s)).prints("late\n");
        adb().on(deviceLog).waitsFor(u"go"_s).prints("late\n");
        readWhile(typed.isEmpty() ? deviceLog : pidof, [this] { selectAnother(); });
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(model->logs(), QString());
        QVERIFY(!model->logging());
    }

    void lateFailureIsShownWhateverIsSelected()
    {
        turnOn();
        adb().on(deviceLog).waitsFor(u"go"_s).complains("error: closed").exits(1);
        readWhile(deviceLog, [this] {
            selectAnother();
            model->logging = true;
        });
        QCOMPARE(writes->take(), QStringList({u"logging=false"_s, u"error=error: closed"_s}));
    }

    void lateSnapshotIsShownOrDropped_data()
    {
        QTest::addColumn<std::function<void(LogTest &)>>("change");
        QTest::addColumn<QStringList>("written");
        const auto row = [](const char *name, const std::function<void(LogTest &)> &change,
                            const QStringList &written) { QTest::newRow(name) << change << written; };
        const QStringList shown{u"logs=late\n"_s};
        row("the selection is cleared", [](LogTest &test) { test.model->selectedID = std::nullopt; }, {});
        row(
            "the phone is selected again",
            [](LogTest &test) {
                test.model->selectedID = u"other"_s;
                test.model->selectedID = test.serial;
            },
            shown);
        row(
            "the phone is unplugged and stays selected", [](LogTest &test) { test.model->devices = {}; }, shown);
        row(
            "the console is turned off", [](LogTest &test) { test.model->logging = false; }, shown);
    }
    void lateSnapshotIsShownOrDropped()
    {
        QFETCH(std::function<void(LogTest &)>, change);
        turnOn();
        adb().on(deviceLog).waitsFor(u"go"_s).prints("late\n");
        bool stays = false;
        readWhile(deviceLog, [&] {
            change(*this);
            stays = model->logging();
        });
        QTEST(writes->take(), "written");
        QCOMPARE(model->logging(), stays);
    }

    void packageOfTheReadIsThatOfItsStart()
    {
        turnOn(package);
        adb().on(pidof).waitsFor(u"go"_s).prints("4711\n");
        adb().on(logOf(u"4711"_s)).prints("line\n");
        readWhile(pidof, [this] { model->packageName = u"com.example.other"_s; });
        QCOMPARE(adb().commandLines(), QList({pidof, logOf(u"4711"_s)}));
    }
};

QTEST_GUILESS_MAIN(LogTest)
#include "LogTest.moc"
