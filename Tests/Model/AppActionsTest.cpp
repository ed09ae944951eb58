// Launching and stopping an app, listing the installed ones.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString package = u"com.example.myapp"_s;
const QStringList resolve = resolveLine(u"R58M42ABCDE"_s, package);
const QStringList forceStop = forceStopLine(u"R58M42ABCDE"_s, package);
const QStringList list{u"-s"_s, u"R58M42ABCDE"_s, u"shell"_s, u"pm"_s, u"list"_s, u"packages"_s, u"-3"_s};
const QString launching = u"Launching app…"_s;
const QString stopping = u"Stopping app…"_s;
const QString listing = u"Reading installed apps…"_s;

QStringList start(const QString &component)
{
    return {u"-s"_s, u"R58M42ABCDE"_s, u"shell"_s, u"am"_s, u"start"_s, u"-W"_s, u"-n"_s, component};
}

QString noActivity(const QString &name)
{
    return u"No launchable activity found for "_s + name +
           u". Check that the APK is installed and includes a launcher activity."_s;
}

} // namespace

class AppActionsTest : public ModelTest
{
    Q_OBJECT

private:
    void selectPhoneAndApp(const QString &typed = package)
    {
        model->packageName = typed;
        selectPhone();
    }

private Q_SLOTS:
    void guardsHaveNoEffectAtAll_data() { addMissingRows(); }
    void guardsHaveNoEffectAtAll()
    {
        QFETCH(QString, missing);
        model->packageName = package;
        dialogs->locations = {scratch(u"shot.png"_s)};
        arrangeMissing(missing);
        model->appAction(true);
        model->appAction(false);
        model->listApps();
        model->screenshot();
        settle();
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(dialogs->saveQuestions.size(), 0);
        QCOMPARE(adb().calls().size(), 0);
        model->busy = false;
    }

    void invalidPackageIsRefusedBeforeAnything_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString &typed : {QString(), u"   \n"_s, u"single"_s, u"com.example;reboot"_s, u"-p com.example"_s,
                                     u"com.example\nreboot.now"_s})
            QTest::newRow(qUtf8Printable(u"'"_s + typed + u'\'')) << typed;
    }
    void invalidPackageIsRefusedBeforeAnything()
    {
        QFETCH(QString, typed);
        selectPhoneAndApp(typed);
        for (const bool launch : {true, false}) {
            model->error = std::nullopt;
            writes->take();
            model->appAction(launch);
            QCOMPARE(writes->take(), QStringList({u"error=Enter an Android package ID such as com.example.myapp."_s}));
        }
        settle();
        QCOMPARE(adb().calls().size(), 0);
    }

    void guardsComeBeforeThePackageCheck()
    {
        model->packageName = u"not valid"_s;
        model->appAction(true);
        selectPhone(device(serial, u"offline"_s));
        model->appAction(true);
        QCOMPARE(model->error(), std::nullopt);
    }

    void packageIsTrimmedAndTheTypedTextIsKept()
    {
        const QString typed = u"  \t\u00a0com.example.myapp \r\n\u2003\n"_s;
        selectPhoneAndApp(typed);
        adb().on(resolve).prints("com.example.myapp/.Main\n");
        adb().on(start(u"com.example.myapp/.Main"_s)).prints("Status: ok\n");
        perform([this] { model->appAction(true); });
        QCOMPARE(writes->take(), success(launching, u"Launched com.example.myapp on R58M42ABCDE."_s));
        QCOMPARE(model->packageName(), typed);
    }

    void launchesTheResolvedComponent()
    {
        const QString component = u"com.example.myapp/com.example.Main$Inner"_s;
        selectPhoneAndApp();
        adb().on(resolve).prints("priority=0 preferredOrder=0 match=0x108000\r\n" + component.toUtf8() + "\r\n");
        adb().on(start(component)).prints("Starting: Intent { }\nStatus: ok\nComplete\n").complains("Warning: slow\n");
        perform([this] { model->appAction(true); });
        QCOMPARE(writes->take(), success(launching, u"Launched com.example.myapp on R58M42ABCDE."_s));
        QCOMPARE(adb().commandLines(), QList({resolve, start(component)}));
    }

    void withoutALaunchableActivityNothingIsStarted_data()
    {
        QTest::addColumn<QByteArray>("resolution");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("another package") << QByteArray("com.example.myapp2/.Main\n");
        QTest::newRow("ill-formed bytes") << QByteArray("com.example.myapp/.Main\xff\n");
    }
    void withoutALaunchableActivityNothingIsStarted()
    {
        QFETCH(QByteArray, resolution);
        selectPhoneAndApp();
        adb().on(resolve).prints(resolution);
        perform([this] { model->appAction(true); });
        QCOMPARE(writes->take(), failure(launching, noActivity(package)));
        QCOMPARE(adb().commandLines(), QList({resolve}));
    }

    void reportedErrorOfAStartIsAFailureWithExitZero_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<bool>("failed");
        QTest::newRow("at the start of a line")
            << QByteArray("Starting\nError: Activity class does not exist.\n") << true;
        QTest::newRow("within a line") << QByteArray("SecurityError: no\n") << true;
        QTest::newRow("in lower case") << QByteArray("error: no\n") << false;
        QTest::newRow("without the colon") << QByteArray("Error type 3\n") << false;
        QTest::newRow("in capitals") << QByteArray("ERROR: no\n") << false;
    }
    void reportedErrorOfAStartIsAFailureWithExitZero()
    {
        QFETCH(QByteArray, output);
        QFETCH(bool, failed);
        selectPhoneAndApp();
        adb().on(resolve).prints("com.example.myapp/.Main\n");
        adb().on(start(u"com.example.myapp/.Main"_s)).prints(output);
        perform([this] { model->appAction(true); });
        QCOMPARE(writes->take(), failed ? failure(launching, QString::fromUtf8(output))
                                        : success(launching, u"Launched com.example.myapp on R58M42ABCDE."_s));
    }

    void reportedErrorIsTheOutputWithoutStandardError()
    {
        selectPhoneAndApp();
        adb().on(forceStop).prints("Error: first\nmore\n").complains("not shown");
        perform([this] { model->appAction(false); });
        QCOMPARE(writes->take(), failure(stopping, u"Error: first\nmore\n"_s));
        adb().on(forceStop).complains("Error: on standard error only");
        perform([this] { model->appAction(false); });
        QCOMPARE(model->status(), u"Stopped com.example.myapp on R58M42ABCDE."_s);
    }

    void stopsTheApp()
    {
        selectPhoneAndApp(u" com.example.myapp\n"_s);
        adb().on(forceStop);
        perform([this] { model->appAction(false); });
        QCOMPARE(writes->take(), success(stopping, u"Stopped com.example.myapp on R58M42ABCDE."_s));
        QCOMPARE(adb().commandLines(), QList({forceStop}));
    }

    void launchInputsAreThoseOfTheClick()
    {
        selectPhoneAndApp();
        adb().on(resolve).waitsFor(u"go"_s).prints("com.example.myapp/.Main\n");
        adb().on(start(u"com.example.myapp/.Main"_s)).prints("ok\n");
        model->appAction(true);
        model->packageName = u"com.example.other"_s;
        model->devices = {device(serial), device(u"other"_s)};
        model->selectedID = u"other"_s;
        QVERIFY(called(adb(), resolve));
        model->packageName = QString();
        tools->open(u"go"_s);
        COMPARE_SOON(model->status(), u"Launched com.example.myapp on R58M42ABCDE."_s);
        QCOMPARE(adb().commandLines(), QList({resolve, start(u"com.example.myapp/.Main"_s)}));
    }

    void listsPackagesIntoTheConsoleAndTurnsItOff_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QString>("console");
        QTest::newRow("two, in the tool's order") << QByteArray("package:com.example.two\npackage:com.example.one\n")
                                                  << u"com.example.two\ncom.example.one\n"_s;
        QTest::newRow("none") << QByteArray() << QString();
        QTest::newRow("the word within a name too")
            << QByteArray("package:com.package:x\nmore package: here") << u"com.x\nmore  here"_s;
        QTest::newRow("in that letter case only")
            << QByteArray("Package:com.example.one\n") << u"Package:com.example.one\n"_s;
        QTest::newRow("nothing trimmed, sorted or merged")
            << QByteArray(" package:b\r\npackage:a\npackage:a\n\n") << u" b\r\na\na\n\n"_s;
        QTest::newRow("ill-formed bytes") << QByteArray("package:\xff\n") << u"\ufffd\n"_s;
    }
    void listsPackagesIntoTheConsoleAndTurnsItOff()
    {
        QFETCH(QByteArray, output);
        QFETCH(QString, console);
        selectPhone();
        model->logs = u"log lines"_s;
        model->logging = true;
        writes->take();
        adb().on(list).prints(output);
        perform([this] { model->listApps(); });
        QCOMPARE(writes->take(),
                 QStringList({u"busy=true"_s, u"status="_s + listing, u"logs="_s + console, u"logging=false"_s,
                              u"status=User-installed package IDs are shown in the console."_s, u"busy=false"_s}));
    }

    void failedListingLeavesTheConsole()
    {
        selectPhone();
        model->logs = u"log lines"_s;
        model->logging = true;
        writes->take();
        adb().on(list).prints("package:com.example.one\n").complains("error: closed").exits(1);
        perform([this] { model->listApps(); });
        QCOMPARE(writes->take(), failure(listing, u"error: closed"_s));
        QVERIFY(model->logging());
    }
};

QTEST_GUILESS_MAIN(AppActionsTest)
#include "AppActionsTest.moc"
