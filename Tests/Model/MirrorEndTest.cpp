// The running live phone beside all other work, and each way in which it ends.
#include "Support/CommandLines.h"
#include "Support/MirrorModelTest.h"

#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

QString stopped(int status)
{
    return u"Screen control stopped (exit %1). Check USB authorization and reconnect the phone."_s.arg(status);
}

} // namespace

class MirrorEndTest : public MirrorModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void closedWindowEndsItSilentlyAndKeepsTheStatus()
    {
        scrcpy().on(command()).waitsFor(u"close"_s);
        startMirror();
        tools->open(u"close"_s);
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
        QCOMPARE(model->status(), liveText);
    }

    void failureIsReportedWithItsStatus_data()
    {
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("signal");
        QTest::newRow("exit 1") << 1 << 0;
        QTest::newRow("exit 2: the phone vanished") << 2 << 0;
        QTest::newRow("exit 255") << 255 << 0;
        QTest::newRow("SIGKILL") << 0 << SIGKILL;
        QTest::newRow("SIGTERM from elsewhere") << 0 << SIGTERM;
        QTest::newRow("SIGHUP") << 0 << SIGHUP;
    }
    void failureIsReportedWithItsStatus()
    {
        QFETCH(int, exitCode);
        QFETCH(int, signal);
        scrcpy().on(command()).waitsFor(u"end"_s).exits(exitCode).diesBy(signal);
        startMirror();
        tools->open(u"end"_s);
        COMPARE_SOON(model->mirrorRunning(), false);
        COMPARE_SOON(model->error().has_value(), true);
        QCOMPARE(writes->take(),
                 QStringList({u"mirrorRunning=false"_s, u"error="_s + stopped(signal == 0 ? exitCode : signal)}));
    }

    void endingBeforeTheLaunchCallReturnsIsReportedAfterIt()
    {
        selectPhone();
        scrcpy().on(command()).exits(1);
        for (int i = 0; i < 20; ++i) {
            model->error = std::nullopt;
            writes->take();
            model->mirrorPhone(false);
            // The child has ended before the event loop turns.
            while (scrcpy().calls().size() <= i || !scrcpy().calls().last().ended)
                QTest::qSleep(1);
            QVERIFY(model->mirrorRunning());
            COMPARE_SOON(model->error(), std::optional(stopped(1)));
            QStringList all = writes->take();
            all.removeAll(u"same"_s); // the status of the mirror before
            all.removeAll(u"status="_s + liveText);
            QCOMPARE(all, QStringList({u"mirrorRunning=true"_s, u"mirrorRunning=false"_s, u"error="_s + stopped(1)}));
        }
    }

    void stopRequestEndsItSilentlyWhateverTheStatus_data()
    {
        QTest::addColumn<int>("exitCode");
        for (const int exitCode : {0, 1, 2})
            QTest::addRow("exit %d", exitCode) << exitCode;
        QTest::newRow("killed by the request") << -1;
    }
    void stopRequestEndsItSilentlyWhateverTheStatus()
    {
        QFETCH(int, exitCode);
        if (exitCode < 0)
            scrcpy().on(command()).hangs();
        else
            scrcpy().on(command()).hangs().exitsOnTermination(exitCode);
        startMirror();
        model->mirrorPhone(false);
        QCOMPARE(writes->take(), QStringList());
        QVERIFY(model->mirrorRunning());
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
        QCOMPARE(scrcpy().calls().size(), 1);
    }

    void recordButtonStopsALiveMirror()
    {
        openMirror();
        dialogs->locations = {scratch(u"a.mp4"_s)};
        model->mirrorPhone(true);
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(dialogs->saveQuestions.size(), 0);
        QCOMPARE(scrcpy().calls().size(), 1);
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
    }

    void twoQuickStopRequestsAreTwoRequestsAndOneSilentEnd()
    {
        scrcpy().on(command()).hangs().exitsOnTermination(1, u"finish"_s);
        startMirror();
        model->mirrorPhone(false);
        COMPARE_SOON(scrcpy().calls().first().terminationRequests, 1);
        model->mirrorPhone(true);
        COMPARE_SOON(scrcpy().calls().first().terminationRequests, 2);
        QVERIFY(model->mirrorRunning());
        tools->open(u"finish"_s);
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
        QCOMPARE(scrcpy().calls().size(), 1);
    }

    void stopRequestWorksWithoutAPhoneAndWhileBusy()
    {
        openMirror();
        model->devices = {};
        model->selectedID = std::nullopt;
        model->busy = true;
        model->mirrorPhone(false);
        COMPARE_SOON(model->mirrorRunning(), false);
        QCOMPARE(model->error(), std::nullopt);
        model->busy = false;
    }

    void nextMirrorReportsItsFailureAgain()
    {
        openMirror();
        model->mirrorPhone(false);
        COMPARE_SOON(model->mirrorRunning(), false);
        scrcpy().on(command()).exits(1);
        model->mirrorPhone(false);
        COMPARE_SOON(model->error(), std::optional(stopped(1)));
    }

    void stopWithoutAMirrorSilencesTheNextOnesFailure()
    {
        model->stop();
        selectPhone();
        scrcpy().on(command()).exits(1);
        model->mirrorPhone(false);
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(model->error(), std::nullopt);
        model->mirrorPhone(false);
        COMPARE_SOON(model->error(), std::optional(stopped(1)));
    }

    void otherActionsWorkWhileItRuns()
    {
        openMirror();
        adb().on(forceStopLine(serial, u"com.example.app"_s));
        model->packageName = u"com.example.app"_s;
        perform([this] { model->appAction(false); });
        QCOMPARE(model->status(), u"Stopped com.example.app on R58M42ABCDE."_s);
        QVERIFY(model->mirrorRunning());
    }

    void itOutlivesChangesOfTheSelection()
    {
        openMirror();
        model->devices = {device(u"other"_s)};
        model->selectedID = u"other"_s;
        settle();
        QVERIFY(model->mirrorRunning());
        QVERIFY(!scrcpy().calls().first().ended);
    }

    void stopOfTheModelAsksItToEndSilently()
    {
        scrcpy().on(command()).hangs().exitsOnTermination(1);
        startMirror();
        model->stop();
        QVERIFY(model->mirrorRunning());
        COMPARE_SOON(model->mirrorRunning(), false);
        settle();
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
        QCOMPARE(scrcpy().calls().first().terminationRequests, 1);
    }

    void slowEndIsNeverForced()
    {
        scrcpy().on(command()).hangs().exitsOnTermination(0, u"written"_s);
        startMirror();
        model->stop();
        COMPARE_SOON(scrcpy().calls().first().terminationRequests, 1);
        QTest::qWait(800); // longer than the runner gives a command before it kills it
        QVERIFY(model->mirrorRunning());
        tools->open(u"written"_s);
        COMPARE_SOON(model->mirrorRunning(), false);
        QVERIFY(scrcpy().calls().first().ended);
        QCOMPARE(model->error(), std::nullopt);
    }

    void destroyedModelLeavesItRunning()
    {
        scrcpy().on(command()).staysUntil(u"end"_s).exitsOnTermination(0);
        startMirror();
        const std::weak_ptr<varda::VardaModel> watched = model;
        writes.reset();
        model.reset();
        QVERIFY2(watched.expired(), "a mirror does not hold the model");
        settle();
        const auto pid = static_cast<pid_t>(scrcpy().calls().first().pid);
        QCOMPARE(kill(pid, 0), 0);
        QCOMPARE(scrcpy().calls().first().terminationRequests, 0);
        tools->open(u"end"_s);
        VERIFY_SOON(kill(pid, 0) != 0); // reaped, too
        QVERIFY(scrcpy().calls().first().ended);
    }

    void destroyedModelNoLongerHearsOfItsEnd()
    {
        selectPhone();
        scrcpy().on(command()).exits(1);
        for (int i = 0; i < 20; ++i) {
            auto another = varda::VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
            another->devices = {device(serial)};
            another->selectedID = serial;
            another->mirrorPhone(false);
            QTest::qSleep(i); // at another moment of the child's life each time
            another.reset();
        }
        settle();
    }

    void reopensAgainAndAgain()
    {
        selectPhone();
        scrcpy().on(command()).hangs().exitsOnTermination(0);
        for (int i = 1; i <= 15; ++i) {
            model->mirrorPhone(false);
            QVERIFY(called(scrcpy(), command(), i));
            model->mirrorPhone(false);
            COMPARE_SOON(model->mirrorRunning(), false);
        }
        QCOMPARE(model->error(), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(MirrorEndTest)
#include "MirrorEndTest.moc"
