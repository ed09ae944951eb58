// What changes while the log console is being read: the answer comes late.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QCoroTask>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString package = u"com.example.myapp"_s;
const QStringList deviceLog = logLine(u"R58M42ABCDE"_s);
const QStringList appLog = deviceLog + QStringList{u"--pid"_s, u"4711"_s};
const QStringList pidof{u"-s"_s, u"R58M42ABCDE"_s, u"shell"_s, u"pidof"_s, package};

} // namespace

class LateSnapshotTest : public ModelTest
{
    Q_OBJECT

private:
    /// A ready phone, the console on, and a snapshot in it.
    void turnOn(const QString &typed = {});

private Q_SLOTS:
    void lateSnapshotOfAnotherSelectionIsDropped_data();
    void lateSnapshotOfAnotherSelectionIsDropped();
    void lateSnapshotForAClearedSelectionIsDropped();
    void lateFailureIsShownWhateverIsSelected();
    void snapshotForAPhoneSelectedAgainIsShown();
    void unpluggedPhoneThatStaysSelectedStillShowsItsLateSnapshot();
    void turnedOffDuringAReadTheSnapshotStillArrives();
    void packageOfTheReadIsThatOfItsStart();
};

void LateSnapshotTest::turnOn(const QString &typed)
{
    model->packageName = typed;
    selectPhone();
    model->logs = u"before"_s;
    model->logging = true;
    writes->take();
}

void LateSnapshotTest::lateSnapshotOfAnotherSelectionIsDropped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QByteArray>("pidofOutput");
    QTest::newRow("device-wide") << QString() << QByteArray();
    QTest::newRow("of an app") << package << QByteArray("4711\n");
    QTest::newRow("the notice that the app does not run") << package << QByteArray();
}

void LateSnapshotTest::lateSnapshotOfAnotherSelectionIsDropped()
{
    QFETCH(QString, typed);
    QFETCH(QByteArray, pidofOutput);
    turnOn(typed);
    adb().on(pidof).waitsFor(u"go"_s).prints(pidofOutput);
    adb().on(appLog).prints("late\n");
    adb().on(deviceLog).waitsFor(u"go"_s).prints("late\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), typed.isEmpty() ? deviceLog : pidof));
    model->devices = {device(serial), device(u"other"_s)};
    model->selectedID = u"other"_s;
    writes->take();
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(writes->take(), QStringList());
    QCOMPARE(model->logs(), QString());
    QVERIFY(!model->logging());
}

void LateSnapshotTest::lateSnapshotForAClearedSelectionIsDropped()
{
    turnOn();
    adb().on(deviceLog).waitsFor(u"go"_s).prints("late\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), deviceLog));
    model->selectedID = std::nullopt;
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(model->logs(), QString());
}

void LateSnapshotTest::lateFailureIsShownWhateverIsSelected()
{
    turnOn();
    adb().on(deviceLog).waitsFor(u"go"_s).complains("error: closed").exits(1);
    auto reading = model->readLogs();
    QVERIFY(called(adb(), deviceLog));
    model->devices = {device(serial), device(u"other"_s)};
    model->selectedID = u"other"_s;
    model->logging = true;
    writes->take();
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(writes->take(), QStringList({u"logging=false"_s, u"error=error: closed"_s}));
}

void LateSnapshotTest::snapshotForAPhoneSelectedAgainIsShown()
{
    turnOn();
    adb().on(deviceLog).waitsFor(u"go"_s).prints("late\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), deviceLog));
    model->selectedID = u"other"_s;
    model->selectedID = serial;
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(model->logs(), u"late\n"_s);
}

void LateSnapshotTest::unpluggedPhoneThatStaysSelectedStillShowsItsLateSnapshot()
{
    turnOn();
    adb().on(deviceLog).waitsFor(u"go"_s).prints("the last lines\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), deviceLog));
    model->devices = {};
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(model->logs(), u"the last lines\n"_s);
    QVERIFY(model->logging());
}

void LateSnapshotTest::turnedOffDuringAReadTheSnapshotStillArrives()
{
    turnOn();
    adb().on(deviceLog).waitsFor(u"go"_s).prints("line\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), deviceLog));
    model->logging = false;
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(model->logs(), u"line\n"_s);
    QVERIFY(!model->logging());
}

void LateSnapshotTest::packageOfTheReadIsThatOfItsStart()
{
    turnOn(package);
    adb().on(pidof).waitsFor(u"go"_s).prints("4711\n");
    adb().on(appLog).prints("line\n");
    auto reading = model->readLogs();
    QVERIFY(called(adb(), pidof));
    model->packageName = u"com.example.other"_s;
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    QCOMPARE(adb().commandLines(), QList({pidof, appLog}));
}

QTEST_GUILESS_MAIN(LateSnapshotTest)
#include "LateSnapshotTest.moc"
