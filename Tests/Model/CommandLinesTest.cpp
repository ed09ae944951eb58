// Every command line of adb and scrcpy, argument by argument, as it arrives at the child, and its time-out.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include "Varda/Model/Adb.h"

#include <QCoroTask>

#include <functional>
#include <map>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::Adb;

namespace {

const QString S = u"R58M42ABCDE"_s;
const QString P = u"com.example.myapp"_s;
const QString component = u"com.example.myapp/.MainActivity"_s;

const QStringList resolveArguments = resolveLine(S, P);
const QStringList logArguments = logLine(S);
const QStringList pidofArguments{u"-s"_s, S, u"shell"_s, u"pidof"_s, P};

} // namespace

class CommandLinesTest : public ModelTest
{
    Q_OBJECT

private:
    /// Lists the phone, answers what an action asks the tool, and does what a user does to start it.
    void perform(const QString &gesture)
    {
        selectPhone();
        adb().onAnything().prints("Success, successfully paired, already connected to it\n");
        adb().on(resolveArguments).prints("priority=0\ncom.example.myapp/.MainActivity\n");
        adb().on(pidofArguments).prints("4711\n");
        adb().on({u"-s"_s, S, u"exec-out"_s, u"screencap"_s, u"-p"_s}).prints("\x89PNG\r\n\x1a\nrest");
        dialogs->locations = {scratch(u"shot.png"_s)};
        if (gesture != u"log")
            model->packageName = P;
        model->pairingEndpoint = u"192.168.1.50:37123"_s;
        model->connectEndpoint = u"192.168.1.50:41111"_s;
        model->pairingCode = u"123456"_s;
        model->acceptAPK(QUrl::fromLocalFile(makeFile(u"demo a b.apk"_s)));

        const std::map<QString, std::function<void()>> gestures{
            {u"refresh"_s, [this] { QCoro::waitFor(model->refresh()); }},
            {u"install"_s, [this] { model->install(); }},
            {u"launch"_s, [this] { model->appAction(true); }},
            {u"stop"_s, [this] { model->appAction(false); }},
            {u"list"_s, [this] { model->listApps(); }},
            {u"screenshot"_s, [this] { model->screenshot(); }},
            {u"log"_s, [this] { QCoro::waitFor(model->readLogs()); }},
            {u"app log"_s, [this] { QCoro::waitFor(model->readLogs()); }},
            {u"pair"_s, [this] { model->pair(); }},
            {u"connect"_s, [this] { model->connect(); }},
        };
        ModelTest::perform(gestures.at(gesture));
    }

private Q_SLOTS:
    void haveTheseTimeOuts()
    {
        QCOMPARE(Adb::devices().timeout.count(), 8.0);
        QCOMPARE(Adb::install(S, u"/tmp/a b.apk"_s).timeout.count(), 180.0);
        QCOMPARE(Adb::resolveLauncher(S, P).timeout.count(), 20.0);
        QCOMPARE(Adb::startActivity(S, component).timeout.count(), 20.0);
        QCOMPARE(Adb::forceStop(S, P).timeout.count(), 20.0);
        QCOMPARE(Adb::listPackages(S).timeout.count(), 20.0);
        QCOMPARE(Adb::screenshot(S).timeout.count(), 20.0);
        QCOMPARE(Adb::log(S, std::nullopt).timeout.count(), 8.0);
        QCOMPARE(Adb::processID(S, P).timeout.count(), 20.0);
        QCOMPARE(Adb::log(S, u"4711"_s).timeout.count(), 8.0);
        QCOMPARE(Adb::pair(u"192.168.1.50:37123"_s).timeout.count(), 40.0);
        QCOMPARE(Adb::connect(u"192.168.1.50:41111"_s).timeout.count(), 20.0);
    }

    void arriveAtTheChildAsTheyAre_data()
    {
        QTest::addColumn<QString>("gesture");
        QTest::addColumn<QList<QStringList>>("expected");
        const auto row = [](const QString &gesture, const QList<QStringList> &expected) {
            QTest::newRow(qUtf8Printable(gesture)) << gesture << expected;
        };
        row(u"refresh"_s, {{u"devices"_s, u"-l"_s}});
        row(u"install"_s, {{u"-s"_s, S, u"install"_s, u"-r"_s, scratch(u"demo a b.apk"_s)}});
        row(u"launch"_s,
            {resolveArguments, {u"-s"_s, S, u"shell"_s, u"am"_s, u"start"_s, u"-W"_s, u"-n"_s, component}});
        row(u"stop"_s, {forceStopLine(S, P)});
        row(u"list"_s, {{u"-s"_s, S, u"shell"_s, u"pm"_s, u"list"_s, u"packages"_s, u"-3"_s}});
        row(u"screenshot"_s, {{u"-s"_s, S, u"exec-out"_s, u"screencap"_s, u"-p"_s}});
        row(u"log"_s, {logArguments});
        row(u"app log"_s, {pidofArguments, logArguments + QStringList{u"--pid"_s, u"4711"_s}});
        row(u"pair"_s, {{u"pair"_s, u"192.168.1.50:37123"_s}});
        row(u"connect"_s, {{u"connect"_s, u"192.168.1.50:41111"_s}, {u"devices"_s, u"-l"_s}});
    }
    void arriveAtTheChildAsTheyAre()
    {
        QFETCH(QString, gesture);
        perform(gesture);
        QCOMPARE(model->error(), std::nullopt);
        QTEST(adb().commandLines(), "expected");
        for (const ToolCall &call : adb().calls()) {
            qInfo().noquote() << "recorded:" << call.argv << "input:" << call.input;
            QCOMPARE(QString::fromUtf8(call.argv.first()), adb().path());
            QCOMPARE(call.input, gesture == u"pair" ? QByteArray("123456\n") : QByteArray());
        }
    }
};

QTEST_GUILESS_MAIN(CommandLinesTest)
#include "CommandLinesTest.moc"
