// Connecting to a phone over Wi-Fi, and what pairing and connecting have in common.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString pairEndpoint = u"192.168.1.50:37123"_s;
const QString endpoint = u"192.168.1.50:41111"_s;
const QStringList pairing{u"pair"_s, pairEndpoint};
const QStringList connecting{u"connect"_s, endpoint};
const QStringList listing = listingLine();
const QString connectingText = u"Connecting over Wi-Fi…"_s;
const QString paired = u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s;
const QString badEndpoint = u"Enter the phone’s wireless connection address in host:port format."_s;

} // namespace

class WirelessTest : public ModelTest
{
    Q_OBJECT

private:
    void typePairing(const QString &address = pairEndpoint)
    {
        model->pairingEndpoint = address;
        model->pairingCode = u"493817"_s;
        writes->take();
    }

    void typeConnection(const QString &address = endpoint)
    {
        model->connectEndpoint = address;
        writes->take();
    }

    /// Connects to the endpoint; adb answers, and then lists these devices.
    void connectAndList(const QByteArray &rows, const QByteArray &answer = "connected to 192.168.1.50:41111\n")
    {
        typeConnection();
        adb().on(connecting).prints(answer);
        adb().on(listing).prints(listingOf(rows));
        perform([this] { model->connect(); });
    }

private Q_SLOTS:
    void addressesAreTrimmedAndKeptAsTyped()
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

    void neitherNeedsASelectedOrReadyPhone()
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

    void badConnectionInputIsRefused_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString &typed :
             {QString(), u" "_s, u"192.168.1.50"_s, u"192.168.1.50:0"_s, u"192.168.1.50:65536"_s, u":5555"_s,
              u"me@host:5555"_s, u"host:5555?x"_s, u"host:5555#x"_s, u"--help:1"_s, u"host:5555\nhost:1"_s})
            QTest::newRow(qUtf8Printable(u"'"_s + typed + u'\'')) << typed;
    }
    void badConnectionInputIsRefused()
    {
        QFETCH(QString, typed);
        typeConnection(typed);
        model->connect();
        settle();
        QCOMPARE(writes->take(), QStringList({u"error="_s + badEndpoint}));
        QCOMPARE(model->connectEndpoint(), typed);
        QCOMPARE(adb().calls().size(), 0);
    }

    void badConnectionInputIsReportedEvenWhileBusy()
    {
        model->busy = true;
        typeConnection(u"nowhere"_s);
        model->connect();
        QCOMPARE(writes->take(), QStringList({u"error="_s + badEndpoint}));
        model->busy = false;
    }

    void answerOfTheToolIsTheStatus_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QString>("status");
        QTest::newRow("connected") << QByteArray("connected to 192.168.1.50:41111\n")
                                   << u"connected to 192.168.1.50:41111"_s;
        QTest::newRow("already connected")
            << QByteArray("already connected to 192.168.1.50:41111\n") << u"already connected to 192.168.1.50:41111"_s;
        QTest::newRow("several lines, trimmed at both ends only")
            << QByteArray("\r\n * daemon started *\nconnected to it \t\n\n")
            << u"* daemon started *\nconnected to it"_s;
    }
    void answerOfTheToolIsTheStatus()
    {
        QFETCH(QByteArray, output);
        QFETCH(QString, status);
        connectAndList("192.168.1.50:41111\tdevice\n", output);
        QCOMPARE(model->status(), status);
        QCOMPARE(model->error(), std::nullopt);
    }

    void answerWithoutTheWordsIsAFailureWithoutARefresh_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QString>("error");
        QTest::newRow("refused, with exit 0")
            << QByteArray("failed to connect to '192.168.1.50:41111': Connection refused\n") << QByteArray()
            << u"failed to connect to '192.168.1.50:41111': Connection refused\n"_s;
        QTest::newRow("an unknown host") << QByteArray("failed to resolve host: 'h'\n") << QByteArray("more\n")
                                         << u"failed to resolve host: 'h'\nmore\n"_s;
        QTest::newRow("not authenticated") << QByteArray("failed to authenticate to 192.168.1.50:41111\n")
                                           << QByteArray() << u"failed to authenticate to 192.168.1.50:41111\n"_s;
        QTest::newRow("in capitals") << QByteArray("CONNECTED TO it\n") << QByteArray() << u"CONNECTED TO it\n"_s;
        QTest::newRow("on standard error only")
            << QByteArray() << QByteArray("connected to it\n") << u"connected to it\n"_s;
        QTest::newRow("silence") << QByteArray() << QByteArray() << QString();
    }
    void answerWithoutTheWordsIsAFailureWithoutARefresh()
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

    void nonZeroExitOfConnectingShowsTheToolsWords()
    {
        typeConnection();
        adb().on(connecting).prints("connected to it\n").complains("adb: cannot connect to daemon\n").exits(1);
        perform([this] { model->connect(); });
        QCOMPARE(writes->take(), failure(connectingText, u"adb: cannot connect to daemon\n"_s));
        QCOMPARE(adb().commandLines(), QList({connecting}));
    }

    void connectedPhoneBecomesTheSelectionAndTheConsoleIsEmptied()
    {
        selectPhone();
        model->logging = true;
        model->logs = u"of the other phone"_s;
        connectAndList(serial.toUtf8() + "\tdevice\n192.168.1.50:41111\tdevice model:Pixel_8\n");
        QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + connectingText,
                                              u"devices=[R58M42ABCDE:device 192.168.1.50:41111:device]"_s,
                                              u"selectedID=192.168.1.50:41111"_s, u"logging=false"_s, u"logs="_s,
                                              u"status=connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
    }

    void phoneListedUnderAnotherNameLeavesTheSelectionAndTheConsole()
    {
        selectPhone();
        model->logging = true;
        model->logs = u"lines"_s;
        connectAndList(serial.toUtf8() +
                       "\tdevice\nadb-R5-x._adb-tls-connect._tcp\tdevice\n192.168.1.50:4111\tdevice\n");
        QCOMPARE(model->selectedID(), std::optional(serial));
        QVERIFY(model->logging());
        QCOMPARE(model->logs(), u"lines"_s);
        QCOMPARE(model->status(), u"connected to 192.168.1.50:41111"_s);
    }

    void phoneSelectedAlreadyLeavesTheConsole()
    {
        selectPhone(device(endpoint));
        model->logging = true;
        model->logs = u"lines"_s;
        connectAndList("192.168.1.50:41111\tdevice model:Pixel_7\n", "already connected to 192.168.1.50:41111\n");
        QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + connectingText, u"same"_s, u"same"_s,
                                              u"status=already connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
        QVERIFY(model->logging());
    }

    void firstConnectionEverSelectsThePhone()
    {
        connectAndList("R5\tdevice\n192.168.1.50:41111\toffline\n");
        QCOMPARE(model->selectedID(), std::optional(endpoint));
        QCOMPARE(model->selected()->state, u"offline"_s);
    }

    void connectionTakesWhatTheRefreshChoseWhereItIsNotListed()
    {
        connectAndList("R5\tdevice\n");
        QCOMPARE(model->selectedID(), std::optional(u"R5"_s));
        adb().on(listing).prints("List of devices attached\n");
        model->selectedID = std::nullopt;
        perform([this] { model->connect(); });
        QCOMPARE(model->selectedID(), std::nullopt);
        QCOMPARE(model->status(), u"connected to 192.168.1.50:41111"_s);
    }

    void connectedButListingFailsKeepsTheDevices()
    {
        selectPhone();
        typeConnection();
        adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
        adb().on(listing).complains("adb: server died\n").exits(1);
        perform([this] { model->connect(); });
        QCOMPARE(writes->take(),
                 QStringList({u"busy=true"_s, u"status="_s + connectingText, u"status=adb: server died\n"_s, u"same"_s,
                              u"status=connected to 192.168.1.50:41111"_s, u"busy=false"_s}));
        QCOMPARE(model->devices(), QList({device(serial)}));
    }

    void selectionMadeDuringTheConnectionYieldsToTheConnectedPhone()
    {
        selectPhone();
        typeConnection();
        adb().on(connecting).waitsFor(u"go"_s).prints("connected to 192.168.1.50:41111\n");
        adb().on(listing).prints("List of devices attached\nA\tdevice\n192.168.1.50:41111\tdevice\n");
        model->connect();
        QVERIFY(called(adb(), connecting));
        model->selectedID = u"A"_s;
        letGo();
        QCOMPARE(model->selectedID(), std::optional(endpoint));
    }

    void busyLastsAcrossTheRefresh()
    {
        typeConnection();
        adb().on(connecting).prints("connected to 192.168.1.50:41111\n");
        adb().on(listing).waitsFor(u"go"_s).prints("List of devices attached\n192.168.1.50:41111\tdevice\n");
        model->connect();
        QVERIFY(called(adb(), listing));
        QVERIFY(model->busy());
        model->start(); // its tick finds the model busy
        settle();
        QCOMPARE(adb().count(listing), 1);
        letGo();
    }

    void endpointIsThatOfTheClick()
    {
        typeConnection();
        adb().on(connecting).waitsFor(u"go"_s).prints("connected to 192.168.1.50:41111\n");
        adb().on(listing).prints("List of devices attached\nother:1\tdevice\n192.168.1.50:41111\tdevice\n");
        model->connect();
        model->connectEndpoint = u"other:1"_s;
        QVERIFY(called(adb(), connecting));
        letGo();
        QCOMPARE(model->selectedID(), std::optional(endpoint));
        QCOMPARE(model->connectEndpoint(), u"other:1"_s);
    }

    void bracketedAddressesAndHostNamesArriveAsTheyAre_data()
    {
        QTest::addColumn<QString>("typed");
        for (const QString &typed :
             {u"[::1]:5555"_s, u"[fe80::1]:41111"_s, u"localhost:1"_s, u"my-phone.local:65535"_s})
            QTest::newRow(qUtf8Printable(typed)) << typed;
    }
    void bracketedAddressesAndHostNamesArriveAsTheyAre()
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
};

QTEST_GUILESS_MAIN(WirelessTest)
#include "WirelessTest.moc"
