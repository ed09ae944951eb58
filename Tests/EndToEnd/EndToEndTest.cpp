// A whole session in the real window, with the real adb and simulated phones: from an empty list to quitting, worked
// over AT-SPI. The acts build on each other; the first that fails ends the play.
#include "Stage.h"
#include "Support/FileContents.h"
#include "Support/StandInTools.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QCryptographicHash>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

const auto package = u"com.example.app"_s;
const auto buildName = u"Grüße aus Köln 1.0.apk"_s;
const auto pairingCode = u"407182"_s;

// Larger than a packet of adb's protocol, and no whole number of them.
constexpr auto buildSize = 3'000'017;

const QStringList phoneButtons{u"Launch"_s,          u"Stop app"_s,    u"List apps"_s, u"Screenshot"_s,
                               u"Open live phone"_s, u"Record test"_s, u"Start logs"_s};

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file{path};
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray patternedBytes(qsizetype size)
{
    QByteArray bytes{"PK\x03\x04"};
    for (quint32 number = 1; bytes.size() < size; number = number * 1'664'525U + 1'013'904'223U)
        bytes.append(static_cast<char>(number >> 24U));
    return bytes;
}

PhoneOptions unauthorizedPhone()
{
    PhoneOptions options;
    options.state = u"unauthorized"_s;
    options.packages = {package, u"org.example.karten"_s};
    return options;
}

PhoneOptions secondPhone()
{
    PhoneOptions options;
    options.model = u"Second Phone"_s;
    return options;
}

} // namespace

class EndToEndTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(stage.errorString().isEmpty(), qUtf8Printable(stage.errorString()));
        QVERIFY2(phone.errorString().isEmpty(), qUtf8Printable(phone.errorString()));
        QVERIFY2(other.errorString().isEmpty(), qUtf8Printable(other.errorString()));
        scrcpy.onAnything().hangs().exitsOnTermination(0);
        QVERIFY(stage.startVarda());
        window = VardaWindow{stage.varda().processId()};
        QVERIFY(window.opens());
    }

    void init() { QVERIFY2(!failedBefore, "an act before this one failed"); }

    void cleanup() { failedBefore = QTest::currentTestFailed(); }

    void waitsForAPhone()
    {
        QVERIFY(window.shows(u"Waiting for your phone"_s));
        QVERIFY(saysStatus(u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s));
        for (const QString &button : phoneButtons)
            QVERIFY(window.buttonBecomes(button, false));
        QVERIFY(window.buttonBecomes(u"Install on device"_s, false));
        QVERIFY(window.buttonBecomes(u"Export"_s, false));
    }

    void warnsOfAnUnauthorizedPhone()
    {
        stage.adb({u"connect"_s, phone.endpoint()});
        QVERIFY(window.lists({phone.serial(), u"unauthorized"_s}));
        QVERIFY(window.shows(u"Unlock your Android phone and approve the “Allow USB debugging?” prompt for this Mac. "
                             u"Varda cannot approve it for you."_s));
        for (const QString &button : phoneButtons)
            QVERIFY(window.buttonBecomes(button, false));
    }

    void offersItsActionsOnceAuthorized()
    {
        QCOMPARE(phone.command(u"authorize"_s), u"ok"_s);
        QVERIFY(window.shows(u"Ready for testing"_s));
        QVERIFY(window.lists({u"Pixel 8"_s, u"Wi-Fi"_s, phone.serial()}));
        QVERIFY(window.hides(u"Allow USB debugging?"_s));
        for (const QString &button : phoneButtons)
            QVERIFY(window.buttonBecomes(button, true));
        QVERIFY(window.buttonBecomes(u"Install on device"_s, false));
    }

    void installsTheChosenBuild()
    {
        const QByteArray build = patternedBytes(buildSize);
        QVERIFY(write(stage.home(buildName), build));
        QVERIFY(window.press(u"Choose APK"_s));
        QVERIFY(window.answerFileDialog(stage.home(buildName)));
        QVERIFY(window.shows(buildName));
        QVERIFY(window.press(u"Install on device"_s));
        QVERIFY(
            saysStatus(u"Installed "_s + buildName + u" on " + phone.serial() + u". Existing app data was retained."));
        const QList<QJsonObject> installs = phone.closed(u"package 'install'"_s);
        QCOMPARE(installs.size(), 1);
        QCOMPARE(installs.first()[u"sha256"_s].toString(),
                 QString::fromLatin1(QCryptographicHash::hash(build, QCryptographicHash::Sha256).toHex()));
    }

    void launchesTheApp()
    {
        QVERIFY(window.fill(u"Package ID"_s, u"  "_s + package));
        QVERIFY(window.press(u"Launch"_s));
        QVERIFY(saysStatus(u"Launched "_s + package + u" on " + phone.serial() + u'.'));
        QVERIFY(processID() > 0);
    }

    void showsTheLogOfTheWholeDevice()
    {
        QVERIFY(window.fill(u"Package ID"_s, QString{}));
        QVERIFY(window.press(u"Start logs"_s));
        QVERIFY(window.buttonBecomes(u"Pause logs"_s, true));
        QCOMPARE(phone.command(u"log Greeter 'Grüße aus Köln'"_s), u"ok"_s);
        QVERIFY(window.consoleBecomes([](const QString &text) { return text.contains(u": Grüße aus Köln"_s); }));
    }

    void limitsTheLogToTheApp()
    {
        const int pid = processID();
        QVERIFY(pid > 0);
        QVERIFY(window.fill(u"Package ID"_s, package));
        // 11-20 23:48:00.123  1234  1234 I Greeter : Grüße aus Köln
        const QRegularExpression ofTheApp{u"^\\S+ \\S+ +%1 "_s.arg(pid)};
        QVERIFY(window.consoleBecomes([&](const QString &text) {
            const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts).filter(QRegularExpression{u"^[^-]"_s});
            return !lines.isEmpty() && lines.filter(ofTheApp).size() == lines.size();
        }));
    }

    void exportsWhatTheConsoleShows()
    {
        QVERIFY(window.press(u"Pause logs"_s));
        QVERIFY(window.buttonBecomes(u"Start logs"_s, true));
        const QString path = stage.home(u"Konsole für Köln.txt"_s);
        QVERIFY(window.press(u"Export"_s));
        QVERIFY(window.answerFileDialog(path));
        QVERIFY(eventually([&] { return QFile::exists(path); }));
        QCOMPARE(QString::fromUtf8(contents(path)), window.look(u"text"_s, u"Device console"_s).text());
    }

    void stopsTheApp()
    {
        QVERIFY(window.press(u"Stop app"_s));
        QVERIFY(saysStatus(u"Stopped "_s + package + u" on " + phone.serial() + u'.'));
        QCOMPARE(processID(), 0);
    }

    void listsTheInstalledApps()
    {
        QVERIFY(window.press(u"List apps"_s));
        QVERIFY(saysStatus(u"User-installed package IDs are shown in the console."_s));
        const Accessible console = window.await(u"text"_s, u"Device console"_s);
        QStringList packages = console.text().split(u'\n', Qt::SkipEmptyParts);
        packages.sort();
        QCOMPARE(packages, (QStringList{package, u"org.example.karten"_s}));
    }

    void savesAScreenshot()
    {
        const QString path = stage.home(u"Bildschirm.png"_s);
        QVERIFY(window.press(u"Screenshot"_s));
        QVERIFY(window.answerFileDialog(path));
        QVERIFY(saysStatus(u"Screenshot saved to Bildschirm.png."_s));
        const QByteArray picture = contents(path);
        QVERIFY(picture.startsWith("\x89PNG\r\n\x1a\n"));
        QCOMPARE(QImage::fromData(picture, "PNG").size(), PhoneOptions{}.screen);
    }

    void saysWhyPairingFailed()
    {
        // Whoever connects there is heard and never answered, until the socket goes.
        QTcpServer nobody;
        QVERIFY(nobody.listen(QHostAddress::LocalHost));
        const QString address = u"127.0.0.1:%1"_s.arg(nobody.serverPort());
        nobody.close();

        QVERIFY(window.press(u"Connect over Wi-Fi"_s));
        QVERIFY(window.shows(u"Go wireless."_s));
        QVERIFY(window.fill(u"Pairing address"_s, address));
        QVERIFY(window.fill(u"Pairing code"_s, pairingCode));
        const Accessible field = window.await(u"password text"_s, u"Pairing code"_s);
        QVERIFY(eventually([&] { return field.characterCount() == pairingCode.size(); }));
        QVERIFY2(!window.tree().contains(pairingCode), qUtf8Printable(window.tree()));

        QVERIFY(window.press(u"Pair this Mac"_s));
        const QString message = window.takeAlert();
        QVERIFY2(!message.isEmpty() && !message.contains(pairingCode), qUtf8Printable(message));
        QVERIFY(saysStatus(u"Pairing with your Android phone… failed."_s));
        QCOMPARE(field.characterCount(), 0);
        QCOMPARE(window.look(u"text"_s, u"Pairing address"_s).text(), address);
    }

    void pairsAfterAWrongCode()
    {
        const QString reply = other.command(u"wireless on"_s);
        if (!reply.startsWith(u"ok"))
            QSKIP(qUtf8Printable(reply));
        wirelessAddress = reply.section(u' ', 1);
        const QString address = other.command(u"pair "_s + pairingCode).section(u' ', 2);
        QVERIFY(window.fill(u"Pairing address"_s, address));
        QVERIFY(window.fill(u"Connection address"_s, wirelessAddress));
        QVERIFY(window.fill(u"Pairing code"_s, u"000000"_s));
        QVERIFY(window.press(u"Pair this Mac"_s));
        QVERIFY(window.takeAlert().contains(u"protocol fault"));
        QVERIFY(window.shows(u"Go wireless."_s));
        QCOMPARE(window.look(u"text"_s, u"Pairing address"_s).text(), address);
        QCOMPARE(window.look(u"text"_s, u"Connection address"_s).text(), wirelessAddress);

        QVERIFY(window.fill(u"Pairing code"_s, pairingCode));
        QVERIFY(window.press(u"Pair this Mac"_s));
        QVERIFY(saysStatus(u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s));
        QVERIFY(window.shows(u"Go wireless."_s));
    }

    void connectsAPhoneOverWiFi()
    {
        QVERIFY(window.fill(u"Connection address"_s, wirelessAddress));
        QVERIFY(window.press(u"Connect phone"_s));
        QVERIFY(saysStatus(u"connected to "_s + wirelessAddress));
        QVERIFY(window.press(u"Done"_s));
        QVERIFY(window.hides(u"Go wireless."_s));
        QVERIFY(window.lists({u"Second Phone"_s, wirelessAddress}));
        QVERIFY(window.isSelected(wirelessAddress));
    }

    void opensAndStopsTheLivePhone()
    {
        QVERIFY(window.select(phone.serial()));
        QVERIFY(window.press(u"Open live phone"_s));
        QVERIFY(saysStatus(u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s));
        QVERIFY(window.buttonBecomes(u"Record test"_s, false));
        COMPARE_SOON(scrcpy.calls().size(), 1);
        QCOMPARE(scrcpy.calls().first().arguments(), (QStringList{u"--serial"_s, phone.serial(), u"--window-title"_s,
                                                                  u"Varda · Pixel 8"_s, u"--max-size"_s, u"1920"_s}));
        QVERIFY(window.press(u"Stop live phone"_s));
        QVERIFY(window.buttonBecomes(u"Open live phone"_s, true));
        QCOMPARE(scrcpy.calls().first().terminationRequests, 1);
    }

    void recordsATest()
    {
        const QString path = stage.home(u"Sitzung.mp4"_s);
        QVERIFY(window.press(u"Record test"_s));
        QVERIFY(window.answerFileDialog(path));
        QVERIFY(saysStatus(u"Recording the real device in the live phone window."_s));
        COMPARE_SOON(scrcpy.calls().size(), 2);
        QCOMPARE(scrcpy.calls().last().arguments().last(2), (QStringList{u"--record"_s, path}));
        QVERIFY(window.press(u"Stop live phone"_s));
        QVERIFY(window.buttonBecomes(u"Record test"_s, true));
    }

    void quitsAndLeavesNothingBehind()
    {
        const QString workspace = visibleWindows(stage.varda().processId(), u"Varda"_s).value(0);
        QVERIFY(activate(workspace));
        pressKeys({u"ctrl+q"_s});
        QVERIFY(eventually([this] { return stage.varda().state() == QProcess::NotRunning; }));
        QCOMPARE(stage.varda().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stage.varda().exitCode(), 0);
        stage.killServer();
        eventually([this] { return stage.leftovers().isEmpty(); });
        QCOMPARE(stage.leftovers(), QStringList{});
    }

private:
    /// The app's process on the phone, 0 where it does not run.
    int processID()
    {
        // "ok {…,"processes":{"com.example.app":1234},…}"
        const QByteArray answer = phone.command(u"status"_s).mid(3).toUtf8();
        return QJsonDocument::fromJson(answer).object()[u"processes"_s][package].toInt();
    }

    bool saysStatus(const QString &text) { return window.statusBecomes(text); }

    Stage stage{{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = {}}};
    StandInTool scrcpy{stage.scrcpyPath(), false};
    VirtualPhone phone{unauthorizedPhone()};
    VirtualPhone other{secondPhone()};
    QString wirelessAddress{other.endpoint()}; ///< its port for paired computers, once that is open
    VardaWindow window{0};
    bool failedBefore = false;
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::EndToEndTest)
#include "EndToEndTest.moc"
