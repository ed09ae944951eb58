// Construction, the poll loop, its start and its end, the selection's observer.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QElapsedTimer>
#include <QFile>

#include <chrono>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QStringList listing = listingLine();

/// The pause between two ticks in milliseconds, less what it may take to see the first one's outcome.
constexpr auto shortestPause = 2350;

} // namespace

class LifecycleTest : public ModelTest
{
    Q_OBJECT

private:
    QStringList logCommand() const { return logLine(serial); }

private Q_SLOTS:
    void newModelHasItsInitialValuesAndDoesNothing()
    {
        QCOMPARE(model->devices(), QList<varda::AndroidDevice>());
        QCOMPARE(model->selectedID(), std::nullopt);
        QCOMPARE(model->selected(), std::nullopt);
        QCOMPARE(model->status(), u"Connect an Android phone with a USB data cable."_s);
        QCOMPARE(model->busy(), false);
        QCOMPARE(model->apk(), std::nullopt);
        QCOMPARE(model->packageName(), QString());
        QCOMPARE(model->logs(), QString());
        QCOMPARE(model->logging(), false);
        QCOMPARE(model->mirrorRunning(), false);
        QCOMPARE(model->wireless(), false);
        QCOMPARE(model->pairingEndpoint(), QString());
        QCOMPARE(model->connectEndpoint(), QString());
        QCOMPARE(model->pairingCode(), QString());
        QCOMPARE(model->error(), std::nullopt);
        settle();
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(adb().calls().size(), 0);
    }

    void selectedIsTheFirstDeviceOfThatSerialOrNothing()
    {
        model->devices = {device(u"A"_s), device(u"B"_s, u"offline"_s), device(u"B"_s, u"device"_s)};
        QCOMPARE(model->selected(), std::nullopt);
        model->selectedID = u"B"_s;
        QCOMPARE(model->selected(), std::optional(device(u"B"_s, u"offline"_s)));
        model->selectedID = u"b"_s;
        QCOMPARE(model->selected(), std::nullopt);
        model->selectedID = QString();
        QCOMPARE(model->selected(), std::nullopt);
        model->selectedID = u"A"_s;
        model->devices = {};
        QCOMPARE(model->selected(), std::nullopt);
        model->devices = {device(u"A"_s)};
        QCOMPARE(model->selected(), std::optional(device(u"A"_s)));
    }

    void writingAnotherSelectionTurnsTheConsoleOffAndEmptiesIt_data()
    {
        QTest::addColumn<std::optional<QString>>("before");
        QTest::addColumn<std::optional<QString>>("after");
        const std::optional<QString> absent;
        QTest::newRow("absent to present") << absent << std::optional(u"A"_s);
        QTest::newRow("one to another") << std::optional(u"A"_s) << std::optional(u"B"_s);
        QTest::newRow("present to absent") << std::optional(u"A"_s) << absent;
        QTest::newRow("in letter case only") << std::optional(u"A"_s) << std::optional(u"a"_s);
        QTest::newRow("absent to empty") << absent << std::optional(QString());
    }
    void writingAnotherSelectionTurnsTheConsoleOffAndEmptiesIt()
    {
        QFETCH(std::optional<QString>, before);
        QFETCH(std::optional<QString>, after);
        model->selectedID = before;
        model->logging = true;
        model->logs = u"lines"_s;
        writes->take();
        model->selectedID = after;
        QCOMPARE(writes->take(),
                 QStringList({u"selectedID="_s + after.value_or(u"absent"_s), u"logging=false"_s, u"logs="_s}));
    }

    void writingTheSameSelectionLeavesTheConsole_data()
    {
        QTest::addColumn<std::optional<QString>>("selection");
        QTest::newRow("absent") << std::optional<QString>();
        QTest::newRow("present") << std::optional(u"A"_s);
        QTest::newRow("empty") << std::optional(QString());
    }
    void writingTheSameSelectionLeavesTheConsole()
    {
        QFETCH(std::optional<QString>, selection);
        model->selectedID = selection;
        model->logging = true;
        model->logs = u"lines"_s;
        writes->take();
        model->selectedID = selection;
        QCOMPARE(writes->take(), QStringList({u"same"_s}));
        QVERIFY(model->logging());
        QCOMPARE(model->logs(), u"lines"_s);
    }

    void everyPropertyAnnouncesItsWrites()
    {
        model->devices = {device(u"A"_s)};
        model->status = u"s"_s;
        model->busy = true;
        model->busy = false;
        model->apk = QUrl(u"file:///a.apk"_s);
        model->packageName = u"p"_s;
        model->logs = u"l"_s;
        model->logging = true;
        model->mirrorRunning = true;
        model->wireless = true;
        model->pairingEndpoint = u"e"_s;
        model->connectEndpoint = u"c"_s;
        model->pairingCode = u"1"_s;
        model->error = QString();
        model->error = std::nullopt;
        QCOMPARE(writes->take(),
                 QStringList({u"devices=[A:device]"_s, u"status=s"_s, u"busy=true"_s, u"busy=false"_s,
                              u"apk=file:///a.apk"_s, u"packageName=p"_s, u"logs=l"_s, u"logging=true"_s,
                              u"mirrorRunning=true"_s, u"wireless=true"_s, u"pairingEndpoint=e"_s,
                              u"connectEndpoint=c"_s, u"pairingCode=1"_s, u"error="_s, u"error=absent"_s}));
    }

    void firstTickStartsOnTheNextTurnOfTheLoop()
    {
        QVERIFY(QFile::remove(adb().path())); // a tick that would otherwise need the tool speaks at once
        model->start();
        QCOMPARE(writes->take(), QStringList());
        VERIFY_SOON(model->status() == u"Android tools are missing from this build.");
    }

    void startingTwicePollsOnce()
    {
        adb().on(listing).waitsFor(u"go"_s).prints(listingOf("A\tdevice\n"));
        model->start();
        model->start();
        QVERIFY(called(adb(), listing));
        model->start();
        settle();
        QCOMPARE(adb().calls().size(), 1);
        tools->open(u"go"_s);
        COMPARE_SOON(model->devices().size(), 1);
    }

    void stoppingBeforeTheFirstTickEndsTheLoop()
    {
        model->start();
        model->stop();
        settle();
        QCOMPARE(adb().calls().size(), 0);
    }

    void stoppingDuringACommandDoesNotWaitForIt()
    {
        adb().on(listing).waitsFor(u"go"_s).prints(listingOf("A\tdevice\n"));
        model->start();
        QVERIFY(called(adb(), listing));
        model->stop();
        QVERIFY(!adb().calls().first().ended);
        tools->open(u"go"_s);
        COMPARE_SOON(model->devices().size(), 1); // the command in flight still publishes what it found
        std::weak_ptr<varda::VardaModel> watched = model;
        writes.reset();
        model.reset();
        VERIFY_SOON(watched.expired());
        QCOMPARE(adb().calls().size(), 1);
    }

    void stoppingDuringThePauseEndsTheLoopAtOnce()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        model->start();
        COMPARE_SOON(model->devices().size(), 1);
        settle();
        QElapsedTimer sinceStop;
        sinceStop.start();
        model->stop();
        std::weak_ptr<varda::VardaModel> watched = model;
        writes.reset();
        model.reset();
        VERIFY_SOON(watched.expired());
        QVERIFY2(sinceStop.elapsed() < shortestPause - 500, "the loop waited for its pause to run out");
    }

    void stoppingWithoutStartingChangesNothingVisible()
    {
        model->stop();
        model->stop();
        settle();
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(adb().calls().size() + scrcpy().calls().size(), 0);
    }

    void startingAfterStoppingPollsAgain()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        model->start();
        COMPARE_SOON(model->devices().size(), 1);
        model->stop();
        model->devices = {};
        model->start();
        COMPARE_SOON(model->devices().size(), 1);
        QCOMPARE(adb().count(listing), 2);
    }

    void ticksPauseAfterTheWorkAndNeverOverlap()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        adb().on(listing).prints(listingOf("A\tdevice\n")).takes(std::chrono::milliseconds(1500)).once();
        model->start();
        COMPARE_SOON(model->devices().size(), 1);
        QElapsedTimer sinceFirst;
        sinceFirst.start();
        QCOMPARE(adb().count(listing), 1);
        QVERIFY(called(adb(), listing, 2));
        QVERIFY2(sinceFirst.elapsed() >= shortestPause, qPrintable(QString::number(sinceFirst.elapsed())));
    }

    void consoleIsReadAfterTheListAndOnlyFromTheNextTickOn()
    {
        adb().on(listing).prints(listingOf(serial.toUtf8() + "\tdevice\n"));
        adb().on(logCommand()).prints("line\n");
        model->start();
        COMPARE_SOON(model->selectedID(), std::optional(serial));
        model->logging = true;
        settle();
        QCOMPARE(adb().calls().size(), 1);
        QCOMPARE(model->logs(), QString());
        COMPARE_SOON(model->logs(), u"line\n"_s);
        QCOMPARE(adb().commandLines(), QList({listing, listing, logCommand()}));
    }

    void tickIsSkippedWhileBusyAndTheNextOneCatchesUp()
    {
        const QStringList forceStop = forceStopLine(serial, u"com.example.app"_s);
        adb().on(listing).prints(listingOf(serial.toUtf8() + "\tdevice\n"));
        adb().on(logCommand()).prints("line\n");
        adb().on(forceStop).waitsFor(u"go"_s);
        selectPhone();
        model->logging = true;
        model->packageName = u"com.example.app"_s;
        model->appAction(false);
        model->packageName = QString();
        model->start(); // its first tick finds the model busy
        QVERIFY(called(adb(), forceStop));
        QTest::qWait(shortestPause + 700); // and so does the second
        QCOMPARE(adb().commandLines(), QList({forceStop}));
        QCOMPARE(model->logs(), QString());
        QVERIFY(model->logging());
        letGo();
        COMPARE_SOON(model->logs(), u"line\n"_s);
        QCOMPARE(adb().commandLines(), QList({forceStop, listing, logCommand()}));
    }

    void unpluggedPhoneTurnsTheConsoleOffAndItsReturnDoesNotTurnItOn()
    {
        adb().on(listing).prints(listingOf(serial.toUtf8() + "\tdevice model:Pixel_7\n"));
        adb().on(listing).prints(listingOf("")).once();
        selectPhone();
        model->logging = true;
        model->logs = u"last snapshot"_s;
        writes->take();
        model->start();
        COMPARE_SOON(model->logging(), false);
        QCOMPARE(
            writes->take(),
            QStringList({u"devices=[]"_s,
                         u"status=No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s,
                         u"logging=false"_s}));
        QCOMPARE(model->logs(), u"last snapshot"_s);
        COMPARE_SOON(model->selected(), std::optional(device(serial)));
        QCOMPARE(model->logging(), false);
        QCOMPARE(adb().commandLines(), QList({listing, listing}));
    }

    void nothingInATickEndsTheLoop()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        adb().on(listing).diesBy(SIGKILL).once();
        selectPhone();
        model->logging = true;
        model->packageName = u"not a package"_s;
        model->start();
        COMPARE_SOON(model->error(),
                     std::optional(u"Enter a valid package ID or leave it blank for device-wide logs."_s));
        QCOMPARE(model->devices().first().id, serial);
        COMPARE_SOON(model->devices().first().id, u"A"_s);
        QCOMPARE(adb().count(listing), 2);
    }

    void destructionWaitsForAStop()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        model->start();
        COMPARE_SOON(model->devices().size(), 1);
        writes.reset();
        std::weak_ptr<varda::VardaModel> watched = model;
        model.reset();
        settle();
        model = watched.lock();
        QVERIFY2(model, "the poll loop holds the model");
        model->stop();
    }
};

QTEST_GUILESS_MAIN(LifecycleTest)
#include "LifecycleTest.moc"
