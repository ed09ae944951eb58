// Pairing with a phone over Wi-Fi, and connecting to it.
#include "ModelTest.h"

#include <QCoroTask>
#include <QDir>
#include <QDirIterator>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString code = u"493817"_s;
const QString pairEndpoint = u"192.168.1.50:37123"_s;
const QString endpoint = u"192.168.1.50:41111"_s;
const QStringList pairing{u"pair"_s, pairEndpoint};
const QStringList connecting{u"connect"_s, endpoint};
const QStringList listing{u"devices"_s, u"-l"_s};
const QString pairingText = u"Pairing with your Android phone…"_s;
const QString connectingText = u"Connecting over Wi-Fi…"_s;
const QString paired = u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s;
const QString badPairing =
    u"Use the pairing IP:port and six-digit code shown in Android Wireless debugging → Pair with pairing code."_s;
const QString badEndpoint = u"Enter the phone’s wireless connection address in host:port format."_s;

} // namespace

class WirelessTest : public ModelTest
{
    Q_OBJECT

private:
    void typePairing(const QString &address = pairEndpoint, const QString &typedCode = code);
    void typeConnection(const QString &address = endpoint);

private Q_SLOTS:
    void badPairingInputIsRefusedAndKept_data();
    void badPairingInputIsRefusedAndKept();
    void codeIsClearedBeforeTheActionStarts();
    void codeIsClearedEvenWhenBusy();
    void addressesAreTrimmedAndKeptAsTyped();
    void neitherNeedsASelectedOrReadyPhone();
    void codeGoesToStandardInputAndNowhereElse();
    void pairingSucceedsInAnyLetterCase_data();
    void pairingSucceedsInAnyLetterCase();
    void failedPairingMasksTheCodeEverywhere_data();
    void failedPairingMasksTheCodeEverywhere();
    void nonZeroExitOfPairingIsNotMasked();
    void pairingKeepsTheSheetAndTheSelection();
    void unlaunchableToolFailsAndTheCodeIsGone();

    void badConnectionInputIsRefused_data();
    void badConnectionInputIsRefused();
    void connectingWhileBusyHasNoEffectAtAll();
    void badConnectionInputIsReportedEvenWhileBusy();
    void answerOfTheToolIsTheStatus_data();
    void answerOfTheToolIsTheStatus();
    void answerWithoutTheWordsIsAFailureWithoutARefresh_data();
    void answerWithoutTheWordsIsAFailureWithoutARefresh();
    void nonZeroExitOfConnectingShowsTheToolsWords();
    void connectedPhoneBecomesTheSelectionAndTheConsoleIsEmptied();
    void phoneListedUnderAnotherNameLeavesTheSelectionAndTheConsole();
    void phoneSelectedAlreadyLeavesTheConsole();
    void firstConnectionEverSelectsThePhone();
    void connectionTakesWhatTheRefreshChoseWhereItIsNotListed();
    void connectedButListingFailsKeepsTheDevices();
    void selectionMadeDuringTheConnectionYieldsToTheConnectedPhone();
    void busyLastsAcrossTheRefresh();
    void endpointIsThatOfTheClick();
    void bracketedAddressesAndHostNamesArriveAsTheyAre_data();
    void bracketedAddressesAndHostNamesArriveAsTheyAre();
};

void WirelessTest::typePairing(const QString &address, const QString &typedCode)
{
    model->pairingEndpoint = address;
    model->pairingCode = typedCode;
    writes->take();
}

void WirelessTest::typeConnection(const QString &address)
{
    model->connectEndpoint = address;
    writes->take();
}

void WirelessTest::badPairingInputIsRefusedAndKept_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("typedCode");
    const auto row = [](const char *name, const QString &address, const QString &typed) {
        QTest::newRow(name) << address << typed;
    };
    row("nothing typed", {}, {});
    row("no address", {}, code);
    row("no code", pairEndpoint, {});
    row("no port", u"192.168.1.50"_s, code);
    row("port 0", u"192.168.1.50:0"_s, code);
    row("port 65536", u"192.168.1.50:65536"_s, code);
    row("a user in the address", u"me@192.168.1.50:37123"_s, code);
    row("a path", u"192.168.1.50:37123/x"_s, code);
    row("a leading dash", u"-192.168.1.50:37123"_s, code);
    row("a blank inside", u"192.168.1.50 :37123"_s, code);
    row("five digits", pairEndpoint, u"49381"_s);
    row("seven digits", pairEndpoint, u"4938170"_s);
    row("a trailing blank", pairEndpoint, u"493817 "_s);
    row("a trailing line feed", pairEndpoint, u"493817\n"_s);
    row("a letter", pairEndpoint, u"49381x"_s);
    row("other digits", pairEndpoint, u"٤٩٣٨١٧"_s);
}

void WirelessTest::badPairingInputIsRefusedAndKept()
{
    QFETCH(QString, address);
    QFETCH(QString, typedCode);
    typePairing(address, typedCode);
    model->pair();
    turn();
    QCOMPARE(writes->take(), QStringList({u"error="_s + badPairing}));
    QCOMPARE(model->pairingCode(), typedCode);
    QCOMPARE(adb().calls().size(), 0);
}

void WirelessTest::codeIsClearedBeforeTheActionStarts()
{
    typePairing();
    adb().on(pairing).waitsFor(u"go"_s).prints("Successfully paired to it\n");
    model->pair();
    QCOMPARE(writes->take(), QStringList({u"pairingCode="_s, u"busy=true"_s, u"status="_s + pairingText}));
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    QCOMPARE(writes->take(), QStringList({u"status="_s + paired, u"busy=false"_s}));
    QCOMPARE(model->pairingCode(), QString());
    QCOMPARE(model->pairingEndpoint(), pairEndpoint);
}

void WirelessTest::codeIsClearedEvenWhenBusy()
{
    typePairing();
    model->busy = true;
    writes->take();
    model->pair();
    turn();
    QCOMPARE(writes->take(), QStringList({u"pairingCode="_s}));
    QCOMPARE(adb().calls().size(), 0);
    model->busy = false;
}

void WirelessTest::addressesAreTrimmedAndKeptAsTyped()
{
    const QString typedPairing = u" \t192.168.1.50:37123\n"_s;
    const QString typedConnection = u"\u00a0192.168.1.50:41111 \r\n"_s;
    typePairing(typedPairing);
    typeConnection(typedConnection);
    adb().on(pairing).prints("Successfully paired\n");
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\n");
    perform([this] { model->pair(); });
    perform([this] { model->connect(); });
    QCOMPARE(adb().commandLines(), QList({pairing, connecting, listing}));
    QCOMPARE(model->pairingEndpoint(), typedPairing);
    QCOMPARE(model->connectEndpoint(), typedConnection);
}

void WirelessTest::neitherNeedsASelectedOrReadyPhone()
{
    selectPhone(device(serial, u"unauthorized"_s));
    typePairing();
    typeConnection();
    adb().on(pairing).prints("Successfully paired\n");
    adb().on(connecting).prints("connected to 192.168.1.50:41111");
    adb().on(listing).prints("List of devices attached\n" + serial.toUtf8() + "\tunauthorized\n");
    perform([this] { model->pair(); });
    QCOMPARE(model->status(), paired);
    perform([this] { model->connect(); });
    QCOMPARE(model->status(), u"connected to 192.168.1.50:41111"_s);
}

void WirelessTest::codeGoesToStandardInputAndNowhereElse()
{
    typePairing();
    adb().on(pairing).waitsFor(u"go"_s).prints("Enter pairing code: Successfully paired to 192.168.1.50:37123\n");
    model->pair();
    QVERIFY(called(adb(), pairing));
    turn();

    const ToolCall call = adb().calls().first();
    QCOMPARE(call.input, code.toUtf8() + '\n');
    const QByteArray secret = code.toUtf8();
    for (const char *part : {"cmdline", "environ"})
        QVERIFY2(!contents(u"/proc/%1/%2"_s.arg(call.pid).arg(QLatin1StringView(part))).contains(secret), part);
    // Neither the staged tree nor the capture directory holds it; the record of the standard input does by its nature.
    for (const QString &folder : {StandInTools::directory(), QDir::tempPath()}) {
        QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            if (!path.endsWith(u"/input"))
                QVERIFY2(!contents(path).contains(secret), qUtf8Printable(path));
        }
    }
    for (const QString &text : {model->status(), model->logs(), model->pairingCode(), model->pairingEndpoint(),
                                model->connectEndpoint(), model->packageName(), model->error().value_or(QString())})
        QVERIFY2(!text.contains(code), qUtf8Printable(text));

    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    for (const QString &write : writes->take())
        QVERIFY2(!write.contains(code), qUtf8Printable(write));
}

void WirelessTest::pairingSucceedsInAnyLetterCase_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("as the tool writes it")
        << QByteArray("Enter pairing code: Successfully paired to it [guid=adb-1]\n");
    QTest::newRow("in capitals") << QByteArray("SUCCESSFULLY PAIRED\n");
    QTest::newRow("in small letters") << QByteArray("xsuccessfully pairedx");
    QTest::newRow("with a complaint beside it") << QByteArray("Successfully Paired");
}

void WirelessTest::pairingSucceedsInAnyLetterCase()
{
    QFETCH(QByteArray, output);
    typePairing();
    adb().on(pairing).prints(output).complains("a warning\n");
    perform([this] { model->pair(); });
    QCOMPARE(model->status(), paired);
    QCOMPARE(model->error(), std::nullopt);
}

void WirelessTest::failedPairingMasksTheCodeEverywhere_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("complaint");
    QTest::addColumn<QString>("error");
    QTest::newRow("echoed twice") << QByteArray("code 493817 and 493817 again\n") << QByteArray()
                                  << u"code [redacted] and [redacted] again\n"_s;
    QTest::newRow("on both streams, joined as they are")
        << QByteArray("Failed: 493817") << QByteArray(" bad 493817.\n") << u"Failed: [redacted] bad [redacted].\n"_s;
    QTest::newRow("across the seam of the streams") << QByteArray("493") << QByteArray("817") << u"[redacted]"_s;
    QTest::newRow("within a longer number") << QByteArray("14938172") << QByteArray() << u"1[redacted]2"_s;
    QTest::newRow("no echo") << QByteArray("Failed: Wrong password\n") << QByteArray() << u"Failed: Wrong password\n"_s;
    QTest::newRow("silence") << QByteArray() << QByteArray() << QString();
    QTest::newRow("the words on standard error only")
        << QByteArray() << QByteArray("Successfully paired\n") << u"Successfully paired\n"_s;
}

void WirelessTest::failedPairingMasksTheCodeEverywhere()
{
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, complaint);
    QFETCH(QString, error);
    typePairing();
    adb().on(pairing).prints(output).complains(complaint);
    perform([this] { model->pair(); });
    QCOMPARE(writes->take(), QStringList({u"pairingCode="_s}) + failure(pairingText, error));
}

void WirelessTest::nonZeroExitOfPairingIsNotMasked()
{
    typePairing();
    adb().on(pairing).prints("out").complains("error: protocol fault with 493817\n").exits(1);
    perform([this] { model->pair(); });
    QCOMPARE(writes->take(),
             QStringList({u"pairingCode="_s}) + failure(pairingText, u"error: protocol fault with 493817\n"_s));
}

void WirelessTest::pairingKeepsTheSheetAndTheSelection()
{
    selectPhone();
    model->wireless = true;
    model->logging = true;
    model->logs = u"lines"_s;
    typePairing();
    adb().on(pairing).prints("Successfully paired\n");
    perform([this] { model->pair(); });
    QVERIFY(model->wireless());
    QVERIFY(model->logging());
    QCOMPARE(model->selectedID(), std::optional(serial));
    QCOMPARE(adb().commandLines(), QList({pairing}));
}

void WirelessTest::unlaunchableToolFailsAndTheCodeIsGone()
{
    typePairing();
    QVERIFY(QFile::remove(adb().path()));
    perform([this] { model->pair(); });
    QCOMPARE(writes->take(),
             QStringList({u"pairingCode="_s}) + failure(pairingText, adb().path() + u": No such file or directory"_s));
}

void WirelessTest::badConnectionInputIsRefused_data()
{
    QTest::addColumn<QString>("typed");
    for (const QString &typed :
         {QString(), u" "_s, u"192.168.1.50"_s, u"192.168.1.50:0"_s, u"192.168.1.50:65536"_s, u":5555"_s,
          u"me@host:5555"_s, u"host:5555?x"_s, u"host:5555#x"_s, u"--help:1"_s, u"host:5555\nhost:1"_s})
        QTest::newRow(qUtf8Printable(u"'"_s + typed + u'\'')) << typed;
}

void WirelessTest::badConnectionInputIsRefused()
{
    QFETCH(QString, typed);
    typeConnection(typed);
    model->connect();
    turn();
    QCOMPARE(writes->take(), QStringList({u"error="_s + badEndpoint}));
    QCOMPARE(model->connectEndpoint(), typed);
    QCOMPARE(adb().calls().size(), 0);
}

void WirelessTest::connectingWhileBusyHasNoEffectAtAll()
{
    typeConnection();
    model->busy = true;
    writes->take();
    model->connect();
    turn();
    QCOMPARE(writes->take(), QStringList());
    QCOMPARE(adb().calls().size(), 0);
    model->busy = false;
}

void WirelessTest::badConnectionInputIsReportedEvenWhileBusy()
{
    model->busy = true;
    typeConnection(u"nowhere"_s);
    model->connect();
    QCOMPARE(writes->take(), QStringList({u"error="_s + badEndpoint}));
    model->busy = false;
}

void WirelessTest::answerOfTheToolIsTheStatus_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("status");
    QTest::newRow("connected") << QByteArray("connected to 192.168.1.50:41111\n")
                               << u"connected to 192.168.1.50:41111"_s;
    QTest::newRow("already connected") << QByteArray("already connected to 192.168.1.50:41111\n")
                                       << u"already connected to 192.168.1.50:41111"_s;
    QTest::newRow("several lines, trimmed at both ends only")
        << QByteArray("\r\n * daemon started *\nconnected to it \t\n\n") << u"* daemon started *\nconnected to it"_s;
}

void WirelessTest::answerOfTheToolIsTheStatus()
{
    QFETCH(QByteArray, output);
    QFETCH(QString, status);
    typeConnection();
    adb().on(connecting).prints(output);
    adb().on(listing).prints("List of devices attached\n192.168.1.50:41111\tdevice\n");
    perform([this] { model->connect(); });
    QCOMPARE(model->status(), status);
    QCOMPARE(model->error(), std::nullopt);
}

void WirelessTest::answerWithoutTheWordsIsAFailureWithoutARefresh_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("complaint");
    QTest::addColumn<QString>("error");
    QTest::newRow("refused, with exit 0")
        << QByteArray("failed to connect to '192.168.1.50:41111': Connection refused\n") << QByteArray()
        << u"failed to connect to '192.168.1.50:41111': Connection refused\n"_s;
    QTest::newRow("an unknown host") << QByteArray("failed to resolve host: 'h'\n") << QByteArray("more\n")
                                     << u"failed to resolve host: 'h'\nmore\n"_s;
    QTest::newRow("not authenticated") << QByteArray("failed to authenticate to 192.168.1.50:41111\n") << QByteArray()
                                       << u"failed to authenticate to 192.168.1.50:41111\n"_s;
    QTest::newRow("in capitals") << QByteArray("CONNECTED TO it\n") << QByteArray() << u"CONNECTED TO it\n"_s;
    QTest::newRow("on standard error only")
        << QByteArray() << QByteArray("connected to it\n") << u"connected to it\n"_s;
    QTest::newRow("silence") << QByteArray() << QByteArray() << QString();
}

void WirelessTest::answerWithoutTheWordsIsAFailureWithoutARefresh()
{
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, complaint);
    QFETCH(QString, error);
    selectPhone();
    typeConnection();
    adb().on(connecting).prints(output).complains(complaint);
    perform([this] { model->connect(); });
    QCOMPARE(writes->take(), failure(connectingText, error));
    QCOMPARE(adb().commandLines(), QList({connecting}));
}

void WirelessTest::nonZeroExitOfConnectingShowsTheToolsWords()
{
    typeConnection();
    adb().on(connecting).prints("connected to it\n").complains("adb: cannot connect to daemon\n").exits(1);
    perform([this] { model->connect(); });
    QCOMPARE(writes->take(), failure(connectingText, u"adb: cannot connect to daemon\n"_s));
    QCOMPARE(adb().commandLines(), QList({connecting}));
}

void WirelessTest::connectedPhoneBecomesTheSelectionAndTheConsoleIsEmptied()
{
    selectPhone();
    model->logging = true;
    model->logs = u"of the other phone"_s;
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\n" + serial.toUtf8() +
                             "\tdevice\n192.168.1.50:41111\tdevice model:Pixel_8\n");
    perform([this] { model->connect(); });
    QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + connectingText,
                                          u"devices=[R58M42ABCDE:device 192.168.1.50:41111:device]"_s,
                                          u"selectedID=192.168.1.50:41111"_s, u"logging=false"_s, u"logs="_s,
                                          u"status=connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
}

void WirelessTest::phoneListedUnderAnotherNameLeavesTheSelectionAndTheConsole()
{
    selectPhone();
    model->logging = true;
    model->logs = u"lines"_s;
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\n" + serial.toUtf8() +
                             "\tdevice\nadb-R5-x._adb-tls-connect._tcp\tdevice\n192.168.1.50:4111\tdevice\n");
    perform([this] { model->connect(); });
    QCOMPARE(model->selectedID(), std::optional(serial));
    QVERIFY(model->logging());
    QCOMPARE(model->logs(), u"lines"_s);
    QCOMPARE(model->status(), u"connected to 192.168.1.50:41111"_s);
}

void WirelessTest::phoneSelectedAlreadyLeavesTheConsole()
{
    selectPhone(device(endpoint));
    model->logging = true;
    model->logs = u"lines"_s;
    typeConnection();
    adb().on(connecting).prints("already connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\n192.168.1.50:41111\tdevice model:Pixel_7\n");
    perform([this] { model->connect(); });
    QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + connectingText, u"same"_s, u"same"_s,
                                          u"status=already connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
    QVERIFY(model->logging());
}

void WirelessTest::firstConnectionEverSelectsThePhone()
{
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\nR5\tdevice\n192.168.1.50:41111\toffline\n");
    perform([this] { model->connect(); });
    QCOMPARE(model->selectedID(), std::optional(endpoint));
    QCOMPARE(model->selected()->state, u"offline"_s);
}

void WirelessTest::connectionTakesWhatTheRefreshChoseWhereItIsNotListed()
{
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\nR5\tdevice\n");
    perform([this] { model->connect(); });
    QCOMPARE(model->selectedID(), std::optional(u"R5"_s));
    adb().on(listing).prints("List of devices attached\n");
    model->selectedID = std::nullopt;
    perform([this] { model->connect(); });
    QCOMPARE(model->selectedID(), std::nullopt);
    QCOMPARE(model->status(), u"connected to 192.168.1.50:41111"_s);
}

void WirelessTest::connectedButListingFailsKeepsTheDevices()
{
    selectPhone();
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).complains("adb: server died\n").exits(1);
    perform([this] { model->connect(); });
    QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + connectingText, u"status=adb: server died\n"_s,
                                          u"same"_s, u"status=connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
    QCOMPARE(model->devices(), QList({device(serial)}));
}

void WirelessTest::selectionMadeDuringTheConnectionYieldsToTheConnectedPhone()
{
    selectPhone();
    typeConnection();
    adb().on(connecting).waitsFor(u"go"_s).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\nA\tdevice\n192.168.1.50:41111\tdevice\n");
    model->connect();
    QVERIFY(called(adb(), connecting));
    model->selectedID = u"A"_s;
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    QCOMPARE(model->selectedID(), std::optional(endpoint));
}

void WirelessTest::busyLastsAcrossTheRefresh()
{
    typeConnection();
    adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).waitsFor(u"go"_s).prints("List of devices attached\n192.168.1.50:41111\tdevice\n");
    model->connect();
    QVERIFY(called(adb(), listing));
    QVERIFY(model->busy());
    model->start(); // its tick finds the model busy
    turn();
    QCOMPARE(adb().count(listing), 1);
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
}

void WirelessTest::endpointIsThatOfTheClick()
{
    typeConnection();
    adb().on(connecting).waitsFor(u"go"_s).prints("connected to 192.168.1.50:41111\n");
    adb().on(listing).prints("List of devices attached\nother:1\tdevice\n192.168.1.50:41111\tdevice\n");
    model->connect();
    model->connectEndpoint = u"other:1"_s;
    QVERIFY(called(adb(), connecting));
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    QCOMPARE(model->selectedID(), std::optional(endpoint));
    QCOMPARE(model->connectEndpoint(), u"other:1"_s);
}

void WirelessTest::bracketedAddressesAndHostNamesArriveAsTheyAre_data()
{
    QTest::addColumn<QString>("typed");
    for (const QString &typed : {u"[::1]:5555"_s, u"[fe80::1]:41111"_s, u"localhost:1"_s, u"my-phone.local:65535"_s})
        QTest::newRow(qUtf8Printable(typed)) << typed;
}

void WirelessTest::bracketedAddressesAndHostNamesArriveAsTheyAre()
{
    QFETCH(QString, typed);
    typeConnection(typed);
    typePairing(typed);
    adb().on({u"pair"_s, typed}).prints("Successfully paired");
    adb().on({u"connect"_s, typed}).prints("connected to " + typed.toUtf8());
    adb().on(listing).prints("List of devices attached\n" + typed.toUtf8() + "\tdevice\n");
    perform([this] { model->pair(); });
    perform([this] { model->connect(); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->selectedID(), std::optional(typed));
}

QTEST_GUILESS_MAIN(WirelessTest)
#include "WirelessTest.moc"
