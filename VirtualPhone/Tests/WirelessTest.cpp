// Wireless debugging: the real adb client pairs and connects; hosts that do not play by the rules get nowhere.
#include "Device/Device.h"
#include "Device/Screen.h"
#include "Support/AdbServer.h"
#include "VirtualPhone.h"
#include "WireHost.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTest>

#include <memory>
#include <optional>
#include <vector>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace varda::phone;
using varda::VirtualPhone;
using varda::test::AdbServer;

namespace {

constexpr int guard = 10'000; // milliseconds

quint16 portOf(const QString &address)
{
    return address.section(u':', 1).toUShort();
}

/// Connections of which nobody says more than `word`.
std::vector<std::unique_ptr<QTcpSocket>> crowd(quint16 port, int size, const QByteArray &word = {})
{
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < size; ++i) {
        auto &socket = sockets.emplace_back(std::make_unique<QTcpSocket>());
        socket->connectToHost(QHostAddress::LocalHost, port);
        socket->waitForConnected(guard);
        socket->write(word);
        socket->flush();
    }
    return sockets;
}

qsizetype connected(const std::vector<std::unique_ptr<QTcpSocket>> &sockets)
{
    return std::count_if(sockets.begin(), sockets.end(), [](const std::unique_ptr<QTcpSocket> &socket) {
        return socket->state() == QAbstractSocket::ConnectedState;
    });
}

} // namespace

class WirelessTest : public QObject
{
    Q_OBJECT

private:
    AdbServer::Result pair(const QByteArray &typed) { return m_adb->run({u"pair"_s, m_pairing}, typed + '\n'); }
    QByteArray connectOver(const QString &address) { return m_adb->run({u"connect"_s, address}).output; }
    void showCode()
    {
        const QStringList reply = m_phone->command(u"pair"_s).split(u' ');
        QCOMPARE(reply.size(), 3);
        m_code = reply.at(1).toLatin1();
        m_pairing = reply.at(2);
    }
    QJsonValue status(const QString &name)
    {
        return QJsonDocument::fromJson(m_phone->command(u"status"_s).mid(3).toUtf8())[name];
    }
    /// Whether somebody listens on the pairing port, in the words of its own status.
    bool isPairing() { return !status(u"pairing"_s).toString().isEmpty(); }
    void checkThatPairingAndConnectingWork();

    std::optional<AdbServer> m_adb;
    std::optional<VirtualPhone> m_phone;
    QString m_connection;
    QString m_pairing;
    QByteArray m_code;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void eachCodeAndItsPortAreNew();
    void portClosesWithThePairing();
    void portClosesAfterThreeWrongCodes();
    void programShowsAnotherCodeWhenOneIsUsedUp();
    void forgottenComputerIsCutOff();
    void onlyTlsIsAnswered();
    void screenShowsTheCode();
    void garbageEndsNothing();
    void crowdsOfSilentHostsKeepNobodyOut_data();
    void crowdsOfSilentHostsKeepNobodyOut();
};

void WirelessTest::initTestCase()
{
    m_adb.emplace(QStringLiteral(ADB_PROGRAM));
    if (!m_adb->isAvailable())
        QSKIP("there is no adb at " ADB_PROGRAM "; Scripts/stage-tools puts it there");
    rlimit files{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
    files.rlim_cur = files.rlim_max;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &files), 0);
}

void WirelessTest::init()
{
    m_phone.emplace();
    m_connection = m_phone->command(u"wireless on"_s).section(u' ', 1);
    QVERIFY(portOf(m_connection) != 0);
    showCode();
}

void WirelessTest::cleanup()
{
    m_adb->run({u"disconnect"_s});
    m_phone.reset();
}

void WirelessTest::checkThatPairingAndConnectingWork()
{
    const AdbServer::Result paired = pair(m_code);
    QVERIFY2(paired.output.contains("Successfully paired to "), paired.error.constData());
    QCOMPARE(connectOver(m_connection).trimmed(), "connected to " + m_connection.toLatin1());
    // adb takes the phone for offline for a moment, and its wait-for-device may end within that moment.
    const QStringList echo{u"-s"_s, m_connection, u"shell"_s, u"echo"_s, u"over TLS"_s};
    QVERIFY(QTest::qWaitFor([&] { return m_adb->run(echo).output.trimmed() == "over TLS"; }, 60'000));
}

void WirelessTest::eachCodeAndItsPortAreNew()
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray code = m_code;
        const QString address = m_pairing;
        showCode();
        QCOMPARE(m_code.size(), 6);
        QVERIFY(m_code != code);
        QVERIFY(m_pairing != address);
    }
    checkThatPairingAndConnectingWork();
}

void WirelessTest::portClosesWithThePairing()
{
    QCOMPARE(pair(m_code).exitCode, 0);
    QTRY_VERIFY(!isPairing());
    QCOMPARE(status(u"computers"_s).toArray().size(), 1);
    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, portOf(m_pairing));
    QVERIFY(!late.waitForConnected(guard));
}

void WirelessTest::portClosesAfterThreeWrongCodes()
{
    const QByteArray wrong = m_code == "000000" ? "000001" : "000000";
    for (int i = 0; i < 3; ++i) {
        QVERIFY(isPairing());
        QCOMPARE(pair(wrong).exitCode, 1);
    }
    QTRY_VERIFY(!isPairing());
    QCOMPARE(pair(m_code).exitCode, 1);
    QCOMPARE(status(u"computers"_s).toArray().size(), 0);
    showCode();
    checkThatPairingAndConnectingWork();
}

void WirelessTest::programShowsAnotherCodeWhenOneIsUsedUp()
{
    QProcess program;
    program.start(QStringLiteral(VIRTUAL_PHONE_PROGRAM), {u"--wireless"_s, u"--until-stdin-closes"_s});
    const auto nextLine = [&program] {
        return QTest::qWaitFor([&] { return program.canReadLine(); }, guard) ? program.readLine().trimmed()
                                                                             : QByteArray();
    };
    QVERIFY(nextLine().startsWith("ready 127.0.0.1:"));
    m_connection = QString::fromLatin1(nextLine()).section(u"connection address: "_s, 1);
    const QString first = QString::fromLatin1(nextLine());
    m_pairing = first.section(u"pairing address: "_s, 1).section(u", pairing code: "_s, 0, 0);
    m_code = first.section(u", pairing code: "_s, 1).toLatin1();
    checkThatPairingAndConnectingWork();
    QVERIFY(nextLine().startsWith("paired with "));
    const QString second = QString::fromLatin1(nextLine());
    QVERIFY2(second.startsWith(u"pairing address: 127.0.0.1:"_s) && second != first, qUtf8Printable(second));
    program.closeWriteChannel();
    QVERIFY(program.waitForFinished(guard));
}

void WirelessTest::forgottenComputerIsCutOff()
{
    checkThatPairingAndConnectingWork();
    QCOMPARE(m_phone->command(u"forget"_s), u"ok"_s);
    QTRY_COMPARE(status(u"connections"_s).toInt(), 0);
    m_adb->run({u"disconnect"_s});
    // The server may end TLS on a descriptor that is the next command's by then, which says something else. A QTRY
    // macro would ask once more after the right answer.
    const QByteArray refusal = "failed to connect to " + m_connection.toLatin1();
    QVERIFY(QTest::qWaitFor([&] { return connectOver(m_connection).trimmed() == refusal; }, 60'000));
}

void WirelessTest::onlyTlsIsAnswered()
{
    WireHost polite(portOf(m_connection));
    const std::optional<Packet> answer = polite.greet();
    QVERIFY(answer);
    QCOMPARE(answer->command, PacketCommand::StartTls);
    const auto publicKey = static_cast<quint32>(AuthenticationKind::PublicKey);
    polite.send({PacketCommand::Authenticate, publicKey, 0, "a key"});
    m_phone->command(u"authorize"_s);
    QVERIFY(polite.isDisconnected());
    WireHost impolite(portOf(m_connection));
    impolite.send({PacketCommand::Open, 1, 0, QByteArray("exec:screencap -p\0", 18)});
    QVERIFY(impolite.isDisconnected());
    QCOMPARE(m_phone->closed(u""_s).size(), 0);
    WireHost wired(m_phone->port());
    QCOMPARE(wired.greet()->command, PacketCommand::Connect);
    wired.send({PacketCommand::StartTls, startTlsVersion, 0, {}});
    QVERIFY(wired.isDisconnected());
}

void WirelessTest::screenShowsTheCode()
{
    Device device(u"Pixel 8"_s, {720, 1600}, nullptr);
    const QImage nothing = paintScreen(device, 0);
    device.setWireless({u"127.0.0.1:42137"_s, {}, {}});
    const QImage address = paintScreen(device, 0);
    device.setWireless({u"127.0.0.1:42137"_s, u"127.0.0.1:37123"_s, u"493817"_s});
    const QImage code = paintScreen(device, 0);
    device.setWireless({u"127.0.0.1:42137"_s, u"127.0.0.1:37123"_s, u"493818"_s});
    QVERIFY(nothing != address);
    QVERIFY(address != code);
    QVERIFY(code != paintScreen(device, 0));
}

void WirelessTest::garbageEndsNothing()
{
    QRandomGenerator random(42);
    for (int i = 0; i < 300; ++i) {
        QByteArray bytes(random.bounded(1, 4000), Qt::Uninitialized);
        for (char &byte : bytes)
            byte = static_cast<char>(random.generate());
        // Pure noise, and noise in what says that it is a TLS handshake.
        if (i % 2 == 0)
            bytes.prepend(QByteArray::fromHex("16030100ae010000aa0303"));
        WireHost(portOf(i % 4 < 2 ? m_connection : m_pairing)).sendBytes(bytes);
    }
    QVERIFY(isPairing());
    QTRY_COMPARE(status(u"connections"_s).toInt(), 0);
    checkThatPairingAndConnectingWork();
}

void WirelessTest::crowdsOfSilentHostsKeepNobodyOut_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::newRow("not a word") << QByteArray();
    QTest::newRow("half a hello") << QByteArray::fromHex("16030100ae010000aa0303");
}

void WirelessTest::crowdsOfSilentHostsKeepNobodyOut()
{
    QFETCH(QByteArray, word);
    const auto wired = crowd(m_phone->port(), 1000, word);
    const auto connecting = crowd(portOf(m_connection), 1000, word);
    const auto pairing = crowd(portOf(m_pairing), 1000, word);
    QTRY_VERIFY(connected(pairing) <= 16);
    QTRY_VERIFY(connected(wired) + connected(connecting) <= 64);
    QVERIFY(status(u"connections"_s).toInt() <= 64);
    checkThatPairingAndConnectingWork();
}

QTEST_GUILESS_MAIN(WirelessTest)
#include "WirelessTest.moc"
