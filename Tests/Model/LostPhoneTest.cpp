// The model with the real adb client when a phone, or adb's server, goes away under its hands.
#include "Support/RealAdbModelTest.h"

#include "Varda/Model/Tools.h"

#include <QCoroTask>
#include <QFile>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <functional>
#include <map>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::VirtualPhone;

namespace {

const QString package = u"com.example.app"_s;

} // namespace

class LostPhoneTest : public RealAdbModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void unpluggingEndsTheAction_data()
    {
        QTest::addColumn<QString>("service");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QString>("working");
        QTest::addColumn<QString>("words"); // empty where adb reports success for what it got so far
        const auto row = [](const char *name, const QString &service, int bytes, const QString &working,
                            const QString &words) { QTest::newRow(name) << service << bytes << working << words; };
        const QString installing = u"Installing demo.apk…"_s;
        const QString launching = u"Launching app…"_s;
        const QString capturing = u"Capturing phone screenshot…"_s;
        row("install, on the way", u"package install"_s, 300'000, installing, u"adb: failed to install "_s);
        row("install, at its start", u"package install"_s, 0, installing, u"adb: failed to install "_s);
        row("launch, finding the activity", u"resolve-activity"_s, 0, launching,
            u"No launchable activity found for "_s);
        row("launch, starting the activity", u"am start"_s, 0, launching, {});
        row("stop", u"force-stop"_s, 0, u"Stopping app…"_s, {});
        row("screenshot, at its start", u"screencap"_s, 0, capturing, u"The phone did not return a valid PNG"_s);
        row("screenshot, on the way", u"screencap"_s, 1000, capturing, {});
        row("list", u"pm list"_s, 0, u"Reading installed apps…"_s, {});
    }
    void unpluggingEndsTheAction()
    {
        QFETCH(QString, service);
        QFETCH(int, bytes);
        QFETCH(QString, working);
        QFETCH(QString, words);
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        QCOMPARE(phone.command(u"on '%1' drop %2"_s.arg(service).arg(bytes)), u"ok"_s);
        phone.command(u"refuse on"_s); // or adb would connect again by itself
        model->packageName = package;
        model->acceptAPK(QUrl::fromLocalFile(makeBuild(u"demo.apk"_s, 5'000'000)));
        dialogs->locations = {path(u"shot.png"_s)};
        const std::map<QString, std::function<void()>> actions{
            {u"Installing demo.apk…"_s, [this] { model->install(); }},
            {u"Launching app…"_s, [this] { model->appAction(true); }},
            {u"Stopping app…"_s, [this] { model->appAction(false); }},
            {u"Capturing phone screenshot…"_s, [this] { model->screenshot(); }},
            {u"Reading installed apps…"_s, [this] { model->listApps(); }},
        };
        perform(actions.at(working));
        qInfo().noquote() << "status:" << model->status() << "error:" << model->error().value_or(u"absent"_s);
        if (words.isEmpty()) {
            QCOMPARE(model->error(), std::nullopt);
            return;
        }
        QVERIFY(model->error());
        QVERIFY2(model->error()->startsWith(words), qUtf8Printable(*model->error()));
        QCOMPARE(model->status(), working + u" failed.");
        QVERIFY(!QFile::exists(path(u"shot.png"_s)));
    }

    void serverThatDiesUnderAnActionReleasesIt()
    {
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        QCOMPARE(phone.command(u"on force-stop hang"_s), u"ok"_s);
        model->packageName = package;
        model->appAction(false);
        VERIFY_SOON(std::any_of(phone.log().cbegin(), phone.log().cend(), [](const QJsonObject &record) {
            return record.value(u"service"_s).toString().contains(u"force-stop");
        }));
        adb({u"kill-server"_s});
        VERIFY_SOON(!model->busy());
        qInfo().noquote() << "status:" << model->status() << "error:" << model->error().value_or(u"absent"_s);
        refresh(); // starts another server
        QVERIFY(!listed(phone.serial()));
    }

    void unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne_data()
    {
        QTest::addColumn<QString>("service");
        QTest::addColumn<int>("bytes");
        QTest::newRow("the log, at its start") << u"logcat"_s << 0;
        QTest::newRow("the log, on the way") << u"logcat"_s << 200;
        QTest::newRow("the process ID") << u"pidof"_s << 0;
    }
    void unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne()
    {
        QFETCH(QString, service);
        QFETCH(int, bytes);
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        QCOMPARE(phone.command(u"on %1 drop %2"_s.arg(service).arg(bytes)), u"ok"_s);
        phone.command(u"refuse on"_s);
        model->packageName = service == u"pidof" ? package : QString();
        model->logging = true;
        QCoro::waitFor(model->readLogs());
        qInfo().noquote() << "logging:" << model->logging() << "error:" << model->error().value_or(u"absent"_s)
                          << "console:" << model->logs().size() << "characters";
        QVERIFY(varda::eventually([this] {
            refresh();
            return !model->selected() || !model->selected()->ready();
        }));
        QCOMPARE(model->selectedID(), std::optional(phone.serial()));
        QCoro::waitFor(model->readLogs());
        QVERIFY(!model->logging());
        QCOMPARE(model->error(), std::nullopt);
    }

    void pollLoopSeesAPhoneGoAndComeBack()
    {
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        model->start();
        model->logging = true;
        VERIFY_SOON(!model->logs().isEmpty());
        phone.command(u"refuse on"_s);
        phone.command(u"drop"_s);
        VERIFY_SOON(!model->selected() || !model->selected()->ready());
        VERIFY_SOON(!model->logging());
        QCOMPARE(model->selectedID(), std::optional(phone.serial()));
        phone.command(u"refuse off"_s);
        adb({u"disconnect"_s, phone.endpoint()});
        adb({u"connect"_s, phone.endpoint()});
        VERIFY_SOON(model->selected() && model->selected()->ready());
        QVERIFY(!model->logging());
    }

    void hungCommandOutlivesTheProgramByItsTimeout()
    {
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        phone.command(u"on logcat hang"_s);
        QProcess program;
        program.start(QStringLiteral(QUIT_IN_FLIGHT), {u"1"_s, u"3"_s, path(u"asked"_s), varda::ToolLocation::adb(),
                                                       u"-s"_s, phone.serial(), u"logcat"_s});
        const auto asked = [&] {
            const QList<QJsonObject> log = phone.log();
            return std::any_of(log.begin(), log.end(), [](const QJsonObject &record) {
                return record[u"event"_s] == u"open"_s && record[u"service"_s].toString().contains(u"logcat");
            });
        };
        VERIFY_SOON(asked());
        QFile leave(path(u"asked"_s));
        QVERIFY(leave.open(QIODevice::WriteOnly));
        VERIFY_SOON(program.state() == QProcess::NotRunning);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(phone.closed(u"logcat"_s).isEmpty());
        VERIFY_SOON(!phone.closed(u"logcat"_s).isEmpty());
        // A server that had been started anew would have no connection.
        refresh();
        QVERIFY(listed(phone.serial())->ready());
    }
};

QTEST_GUILESS_MAIN(LostPhoneTest)
#include "LostPhoneTest.moc"
