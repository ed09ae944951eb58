// The live phone: a long-running process beside all other work.
#include "ModelTest.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTimer>

#include <csignal>

#include <unistd.h>

extern char **environ;

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::SaveKind;

namespace {

const QString live = u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s;
const QString recording = u"Recording the real device in the live phone window."_s;

QString stopped(int status)
{
    return u"Screen control stopped (exit %1). Check USB authorization and reconnect the phone."_s.arg(status);
}

} // namespace

class MirrorTest : public ModelTest
{
    Q_OBJECT

private:
    QStringList command(const QString &name = u"Pixel 7"_s) const
    {
        return {u"--serial"_s, serial, u"--window-title"_s, u"Varda · "_s + name, u"--max-size"_s, u"1920"_s};
    }
    QStringList recordCommand(const QString &path) const { return command() + QStringList{u"--record"_s, path}; }
    /// A ready phone, and a running mirror that obeys a request to end.
    void openMirror();
    QStringList opened() const { return {u"mirrorRunning=true"_s, u"status="_s + live}; }

private Q_SLOTS:
    void guardsHaveNoEffectAtAll_data();
    void guardsHaveNoEffectAtAll();
    void opensWithThisCommandLineAndNoOtherEffect();
    void childGetsTheToolsInItsEnvironment();
    void environmentOfTheModelOverridesTheInheritedOne();
    void childGetsTheNullDeviceForItsMessages();
    void childLeadsASessionOfItsOwn();
    void titleCarriesTheNameUnchanged_data();
    void titleCarriesTheNameUnchanged();
    void recordsToTheChosenFile_data();
    void recordsToTheChosenFile();
    void cancelledRecordingChangesNothing();
    void recordingDialogMayOutliveItsConditions();
    void mirrorOpenedUnderTheRecordingDialogIsTheOnlyOne();
    void launchFailureIsAnErrorAndNothingElse_data();
    void launchFailureIsAnErrorAndNothingElse();
    void afterALaunchFailureItOpensAgain();
    void closedWindowEndsItSilentlyAndKeepsTheStatus();
    void failureIsReportedWithItsStatus_data();
    void failureIsReportedWithItsStatus();
    void endingBeforeTheLaunchCallReturnsIsReportedAfterIt();
    void stopRequestEndsItSilentlyWhateverTheStatus_data();
    void stopRequestEndsItSilentlyWhateverTheStatus();
    void recordButtonStopsALiveMirror();
    void twoQuickStopRequestsAreTwoRequestsAndOneSilentEnd();
    void stopRequestWorksWithoutAPhoneAndWhileBusy();
    void nextMirrorReportsItsFailureAgain();
    void stopWithoutAMirrorSilencesTheNextOnesFailure();
    void otherActionsWorkWhileItRuns();
    void itOutlivesChangesOfTheSelection();
    void revokedPhoneEndsItWithTheExitMessage();
    void stopOfTheModelAsksItToEndSilently();
    void slowEndIsNeverForced();
    void destroyedModelLeavesItRunning();
    void destroyedModelNoLongerHearsOfItsEnd();
    void reopensAgainAndAgain();
};

void MirrorTest::openMirror()
{
    selectPhone();
    scrcpy().on(command()).hangs().exitsOnTermination(0);
    model->mirrorPhone(false);
    QVERIFY(model->mirrorRunning());
    QVERIFY(called(scrcpy(), command()));
    QCOMPARE(writes->take(), opened());
}

void MirrorTest::guardsHaveNoEffectAtAll_data()
{
    addMissingRows();
}

void MirrorTest::guardsHaveNoEffectAtAll()
{
    QFETCH(QString, missing);
    dialogs->locations = {scratch(u"a.mp4"_s)};
    arrangeMissing(missing);
    model->mirrorPhone(false);
    model->mirrorPhone(true);
    turn();
    QCOMPARE(writes->take(), QStringList());
    QCOMPARE(dialogs->saveQuestions.size(), 0);
    QCOMPARE(scrcpy().calls().size(), 0);
    model->busy = false;
}

void MirrorTest::opensWithThisCommandLineAndNoOtherEffect()
{
    openMirror();
    QCOMPARE(model->busy(), false);
    const ToolCall call = scrcpy().calls().first();
    qInfo().noquote() << "recorded:" << call.argv;
    QCOMPARE(call.argv.first(), scrcpy().path().toUtf8());
    QCOMPARE(call.workingDirectory, QDir::currentPath());
    QCOMPARE(adb().calls().size(), 0);
}

void MirrorTest::childGetsTheToolsInItsEnvironment()
{
    openMirror();
    QHash<QByteArray, QByteArray> expected;
    for (char **entry = environ; *entry; ++entry) {
        const QByteArray text(*entry);
        expected.insert(text.left(text.indexOf('=')), text.mid(text.indexOf('=') + 1));
    }
    const QByteArray directory = StandInTools::directory().toUtf8();
    expected.insert("ADB", directory + "/platform-tools/adb");
    expected.insert("SCRCPY_SERVER_PATH", directory + "/scrcpy/scrcpy-server");
    QCOMPARE(scrcpy().calls().first().environment, expected);
}

void MirrorTest::environmentOfTheModelOverridesTheInheritedOne()
{
    qputenv("ADB", "/usr/bin/another-adb");
    qputenv("SCRCPY_SERVER_PATH", "/another/server");
    openMirror();
    const ToolCall call = scrcpy().calls().first();
    QCOMPARE(call.environment.value("ADB"), adb().path().toUtf8());
    QVERIFY(call.environment.value("SCRCPY_SERVER_PATH").startsWith(StandInTools::directory().toUtf8()));
    qunsetenv("ADB");
    qunsetenv("SCRCPY_SERVER_PATH");
}

void MirrorTest::childGetsTheNullDeviceForItsMessages()
{
    openMirror();
    const QStringList held = scrcpy().calls().first().descriptors;
    QCOMPARE(held.size(), 3);
    QVERIFY2(held[0].startsWith(u"0 "), qUtf8Printable(held[0]));
    QCOMPARE(held.mid(1), QStringList({u"1 /dev/null"_s, u"2 /dev/null"_s}));
}

void MirrorTest::childLeadsASessionOfItsOwn()
{
    openMirror();
    const ToolCall call = scrcpy().calls().first();
    QCOMPARE(call.session, call.pid);
    QVERIFY(call.session != getsid(0));
}

void MirrorTest::titleCarriesTheNameUnchanged_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name :
         {u"Größe 日本 👍🏽"_s, QString(), u"two  blanks \"quoted\" 'x' $HOME"_s, u"--record=/tmp/x"_s})
        QTest::newRow(qUtf8Printable(u"'"_s + name + u'\'')) << name;
}

void MirrorTest::titleCarriesTheNameUnchanged()
{
    QFETCH(QString, name);
    selectPhone(device(serial, u"device"_s, name));
    scrcpy().on(command(name)).hangs().exitsOnTermination(0);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command(name)));
    QCOMPARE(scrcpy().calls().first().argv.value(4), "Varda \xc2\xb7 " + name.toUtf8());
}

void MirrorTest::recordsToTheChosenFile_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : {u"Varda-session.mp4"_s, u"with blank 'quoted' 日本.mp4"_s, u"-x"_s})
        QTest::newRow(qUtf8Printable(name)) << name;
}

void MirrorTest::recordsToTheChosenFile()
{
    QFETCH(QString, name);
    const QString path = scratch(name);
    selectPhone();
    dialogs->locations = {path};
    scrcpy().on(recordCommand(path)).hangs().exitsOnTermination(0);
    model->mirrorPhone(true);
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=true"_s, u"status="_s + recording}));
    QVERIFY(called(scrcpy(), recordCommand(path)));
    QCOMPARE(dialogs->saveQuestions.size(), 1);
    QVERIFY(dialogs->saveQuestions.first().kind == SaveKind::Mpeg4Movie);
    QCOMPARE(dialogs->saveQuestions.first().proposedName, u"Varda-session.mp4"_s);
}

void MirrorTest::cancelledRecordingChangesNothing()
{
    selectPhone();
    model->mirrorPhone(true);
    turn();
    QCOMPARE(dialogs->saveQuestions.size(), 1);
    QCOMPARE(writes->take(), QStringList());
    QCOMPARE(scrcpy().calls().size(), 0);
}

void MirrorTest::recordingDialogMayOutliveItsConditions()
{
    const QString path = scratch(u"a.mp4"_s);
    selectPhone();
    dialogs->locations = {path};
    dialogs->whileOpen = [this] {
        model->devices = {device(u"other"_s)};
        model->selectedID = u"other"_s;
    };
    scrcpy().on(recordCommand(path)).hangs().exitsOnTermination(0);
    model->mirrorPhone(true);
    QVERIFY(called(scrcpy(), recordCommand(path)));
}

void MirrorTest::mirrorOpenedUnderTheRecordingDialogIsTheOnlyOne()
{
    selectPhone();
    dialogs->locations = {scratch(u"a.mp4"_s)};
    scrcpy().on(command()).hangs().exitsOnTermination(0);
    dialogs->whileOpen = [this] { model->mirrorPhone(false); };
    model->mirrorPhone(true);
    QVERIFY(called(scrcpy(), command()));
    turn();
    QCOMPARE(scrcpy().calls().size(), 1);
    QCOMPARE(writes->take(), opened());
}

void MirrorTest::launchFailureIsAnErrorAndNothingElse_data()
{
    QTest::addColumn<QString>("trouble");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no file") << u"absent"_s << u"No such file or directory"_s;
    QTest::newRow("not executable") << u"plain"_s << u"Permission denied"_s;
    QTest::newRow("a directory") << u"directory"_s << u"Permission denied"_s;
    QTest::newRow("no program") << u"garbage"_s << u"Exec format error"_s;
}

void MirrorTest::launchFailureIsAnErrorAndNothingElse()
{
    QFETCH(QString, trouble);
    QFETCH(QString, reason);
    selectPhone();
    QVERIFY(QFile::remove(scrcpy().path()));
    if (trouble == u"directory")
        QVERIFY(QDir().mkdir(scrcpy().path()));
    if (trouble == u"plain" || trouble == u"garbage") {
        QFile file(scrcpy().path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\x01garbage");
        file.close();
        const QFile::Permissions plain = QFile::ReadOwner | QFile::WriteOwner;
        QVERIFY(file.setPermissions(trouble == u"plain" ? plain : plain | QFile::ExeOwner));
    }
    model->mirrorPhone(false);
    QCOMPARE(writes->take(), QStringList({u"error="_s + scrcpy().path() + u": " + reason}));
    QVERIFY(!model->mirrorRunning());
}

void MirrorTest::afterALaunchFailureItOpensAgain()
{
    selectPhone();
    QVERIFY(QFile::rename(scrcpy().path(), scrcpy().path() + u".away"));
    model->mirrorPhone(false);
    QVERIFY(QFile::rename(scrcpy().path() + u".away", scrcpy().path()));
    writes->take();
    openMirror();
}

void MirrorTest::closedWindowEndsItSilentlyAndKeepsTheStatus()
{
    selectPhone();
    scrcpy().on(command()).waitsFor(u"close"_s);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    writes->take();
    tools->open(u"close"_s);
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
    QCOMPARE(model->status(), live);
}

void MirrorTest::failureIsReportedWithItsStatus_data()
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

void MirrorTest::failureIsReportedWithItsStatus()
{
    QFETCH(int, exitCode);
    QFETCH(int, signal);
    selectPhone();
    scrcpy().on(command()).waitsFor(u"end"_s).exits(exitCode).diesBy(signal);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    writes->take();
    tools->open(u"end"_s);
    COMPARE_SOON(model->mirrorRunning(), false);
    COMPARE_SOON(model->error().has_value(), true);
    QCOMPARE(writes->take(),
             QStringList({u"mirrorRunning=false"_s, u"error="_s + stopped(signal == 0 ? exitCode : signal)}));
}

void MirrorTest::endingBeforeTheLaunchCallReturnsIsReportedAfterIt()
{
    selectPhone();
    scrcpy().on(command()).exits(1);
    for (int i = 0; i < 20; ++i) {
        model->error = std::nullopt;
        writes->take();
        model->mirrorPhone(false);
        QTest::qSleep(20); // the child has ended before the event loop turns
        QVERIFY(model->mirrorRunning());
        COMPARE_SOON(model->error(), std::optional(stopped(1)));
        QStringList all = writes->take();
        all.removeAll(u"same"_s); // the status of the mirror before
        all.removeAll(u"status="_s + live);
        QCOMPARE(all, QStringList({u"mirrorRunning=true"_s, u"mirrorRunning=false"_s, u"error="_s + stopped(1)}));
    }
}

void MirrorTest::stopRequestEndsItSilentlyWhateverTheStatus_data()
{
    QTest::addColumn<int>("exitCode");
    for (const int exitCode : {0, 1, 2})
        QTest::addRow("exit %d", exitCode) << exitCode;
    QTest::newRow("killed by the request") << -1;
}

void MirrorTest::stopRequestEndsItSilentlyWhateverTheStatus()
{
    QFETCH(int, exitCode);
    selectPhone();
    if (exitCode < 0)
        scrcpy().on(command()).hangs();
    else
        scrcpy().on(command()).hangs().exitsOnTermination(exitCode);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    writes->take();
    model->mirrorPhone(false);
    QCOMPARE(writes->take(), QStringList());
    QVERIFY(model->mirrorRunning());
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
    QCOMPARE(scrcpy().calls().size(), 1);
}

void MirrorTest::recordButtonStopsALiveMirror()
{
    openMirror();
    dialogs->locations = {scratch(u"a.mp4"_s)};
    model->mirrorPhone(true);
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(dialogs->saveQuestions.size(), 0);
    QCOMPARE(scrcpy().calls().size(), 1);
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
}

void MirrorTest::twoQuickStopRequestsAreTwoRequestsAndOneSilentEnd()
{
    selectPhone();
    scrcpy().on(command()).hangs().exitsOnTermination(1, u"finish"_s);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    writes->take();
    model->mirrorPhone(false);
    COMPARE_SOON(scrcpy().calls().first().terminationRequests, 1);
    model->mirrorPhone(true);
    COMPARE_SOON(scrcpy().calls().first().terminationRequests, 2);
    QVERIFY(model->mirrorRunning());
    tools->open(u"finish"_s);
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
    QCOMPARE(scrcpy().calls().size(), 1);
}

void MirrorTest::stopRequestWorksWithoutAPhoneAndWhileBusy()
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

void MirrorTest::nextMirrorReportsItsFailureAgain()
{
    openMirror();
    model->mirrorPhone(false);
    COMPARE_SOON(model->mirrorRunning(), false);
    scrcpy().on(command()).exits(1);
    model->mirrorPhone(false);
    COMPARE_SOON(model->error(), std::optional(stopped(1)));
}

void MirrorTest::stopWithoutAMirrorSilencesTheNextOnesFailure()
{
    model->stop();
    selectPhone();
    scrcpy().on(command()).exits(1);
    model->mirrorPhone(false);
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(model->error(), std::nullopt);
    model->mirrorPhone(false);
    COMPARE_SOON(model->error(), std::optional(stopped(1)));
}

void MirrorTest::otherActionsWorkWhileItRuns()
{
    openMirror();
    const QStringList forceStop{u"-s"_s, serial, u"shell"_s, u"am"_s, u"force-stop"_s, u"com.example.app"_s};
    adb().on(forceStop);
    model->packageName = u"com.example.app"_s;
    perform([this] { model->appAction(false); });
    QCOMPARE(model->status(), u"Stopped com.example.app on R58M42ABCDE."_s);
    QVERIFY(model->mirrorRunning());
}

void MirrorTest::itOutlivesChangesOfTheSelection()
{
    openMirror();
    model->devices = {device(u"other"_s)};
    model->selectedID = u"other"_s;
    turn();
    QVERIFY(model->mirrorRunning());
    QVERIFY(!scrcpy().calls().first().ended);
}

void MirrorTest::revokedPhoneEndsItWithTheExitMessage()
{
    selectPhone();
    scrcpy().on(command()).waitsFor(u"revoked"_s).exits(1);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    model->devices = {device(serial, u"unauthorized"_s)};
    tools->open(u"revoked"_s);
    COMPARE_SOON(model->error(), std::optional(stopped(1)));
    QVERIFY(!model->mirrorRunning());
}

void MirrorTest::stopOfTheModelAsksItToEndSilently()
{
    selectPhone();
    scrcpy().on(command()).hangs().exitsOnTermination(1);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    writes->take();
    model->stop();
    QVERIFY(model->mirrorRunning());
    COMPARE_SOON(model->mirrorRunning(), false);
    turn();
    QCOMPARE(writes->take(), QStringList({u"mirrorRunning=false"_s}));
    QCOMPARE(scrcpy().calls().first().terminationRequests, 1);
}

void MirrorTest::slowEndIsNeverForced()
{
    selectPhone();
    scrcpy().on(command()).hangs().exitsOnTermination(0, u"written"_s);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    model->stop();
    COMPARE_SOON(scrcpy().calls().first().terminationRequests, 1);
    turnFor(std::chrono::milliseconds(800)); // longer than the runner gives a command before it kills it
    QVERIFY(model->mirrorRunning());
    tools->open(u"written"_s);
    COMPARE_SOON(model->mirrorRunning(), false);
    QVERIFY(scrcpy().calls().first().ended);
    QCOMPARE(model->error(), std::nullopt);
}

void MirrorTest::destroyedModelLeavesItRunning()
{
    selectPhone();
    scrcpy().on(command()).staysUntil(u"end"_s).exitsOnTermination(0);
    model->mirrorPhone(false);
    QVERIFY(called(scrcpy(), command()));
    const std::weak_ptr<varda::VardaModel> watched = model;
    writes.reset();
    model.reset();
    QVERIFY2(watched.expired(), "a mirror does not hold the model");
    turn();
    const auto pid = static_cast<pid_t>(scrcpy().calls().first().pid);
    QCOMPARE(kill(pid, 0), 0);
    QCOMPARE(scrcpy().calls().first().terminationRequests, 0);
    tools->open(u"end"_s);
    VERIFY_SOON(kill(pid, 0) != 0); // reaped, too
    QVERIFY(scrcpy().calls().first().ended);
}

void MirrorTest::destroyedModelNoLongerHearsOfItsEnd()
{
    selectPhone();
    scrcpy().on(command()).exits(1);
    for (int i = 0; i < 20; ++i) {
        auto another = varda::VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
        another->devices = {device(serial)};
        another->selectedID = serial;
        another->mirrorPhone(false);
        QTest::qSleep(i);
        another.reset();
        turnFor(std::chrono::milliseconds(5));
    }
}

void MirrorTest::reopensAgainAndAgain()
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

QTEST_GUILESS_MAIN(MirrorTest)
#include "MirrorTest.moc"
