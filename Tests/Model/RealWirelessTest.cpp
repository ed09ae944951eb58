// The model with the real adb client and the simulated phone's wireless debugging: from the code to an installed build,
// and what a user meets on the way.
#include "Support/FileContents.h"
#include "Support/RealAdbModelTest.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::VirtualPhone;

namespace {

const QString code = u"493817"_s;
const QString pairing = u"Pairing with your Android phone…"_s;
const QString paired = u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s;
const QString connecting = u"Connecting over Wi-Fi…"_s;
/// All that adb 34 says of a pairing that failed, whatever the reason.
const QString noStatus = u"error: protocol fault (couldn't read status message): Success\n"_s;

/// The files whose contents hold the code, of those that adb and Varda may write.
QStringList filesWithTheCode()
{
    QStringList found;
    for (const char *folder : {"HOME", "TMPDIR"}) {
        QDirIterator files(qEnvironmentVariable(folder), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            if (contents(path).contains(code.toUtf8()))
                found.append(path);
        }
    }
    return found;
}

/// The command lines of all processes, or what else /proc tells of them.
QList<QByteArray> processes(const QString &part)
{
    QList<QByteArray> found;
    for (const QString &process : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs))
        found.append(contents(u"/proc/%1/%2"_s.arg(process, part)));
    return found;
}

bool anyContains(const QList<QByteArray> &texts, const QByteArray &words)
{
    return std::any_of(texts.begin(), texts.end(), [&](const QByteArray &text) { return text.contains(words); });
}

QStringList messages;

void collectMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    messages.append(text);
}

/// What the phone's owner reads on it: a connection address, or, while it shows a code, a pairing address.
QString shown(VirtualPhone &phone, const QString &what)
{
    const QByteArray report = phone.command(u"status"_s).section(u' ', 1).toUtf8();
    return QJsonDocument::fromJson(report)[what].toString();
}

} // namespace

class RealWirelessTest : public RealAdbModelTest
{
    Q_OBJECT

private:
    /// A phone that shows the code; the user has typed both its addresses into the sheet.
    VirtualPhone &addWirelessPhone()
    {
        if (phones.empty())
            restartServer(); // those of the test before went away while they were connected
        VirtualPhone &phone = addPhone();
        model->connectEndpoint = phone.command(u"wireless on"_s).section(u' ', 1);
        model->wireless = true;
        showCode(phone);
        return phone;
    }

    void showCode(VirtualPhone &phone)
    {
        model->pairingEndpoint = phone.command(u"pair "_s + code).section(u' ', 2);
        QVERIFY(!model->pairingEndpoint().isEmpty());
    }

    void pair(const QString &typed = code)
    {
        model->pairingCode = typed;
        perform([this] { model->pair(); });
        QCOMPARE(model->pairingCode(), QString());
    }

    void checkSuccess() { QVERIFY2(!model->error(), qUtf8Printable(model->error().value_or(QString()))); }

    void pairAndConnect()
    {
        pair();
        checkSuccess();
        QCOMPARE(model->status(), paired);
        perform([this] { model->connect(); });
        checkSuccess();
        QCOMPARE(model->selectedID(), std::optional(model->connectEndpoint()));
    }

    void checkFailure(const QString &working, const QString &words)
    {
        qInfo().noquote() << "status:" << model->status() << "error:" << model->error().value_or(u"absent"_s);
        QCOMPARE(model->error(), std::optional(words));
        QCOMPARE(model->status(), working + u" failed.");
        QVERIFY(model->wireless());
        QCOMPARE(filesWithTheCode(), QStringList());
        model->error = std::nullopt;
    }

    /// When a connection fails or breaks off, adb 34's server closes the descriptor before it ends TLS, so that its
    /// last record may be the answer to a command that has come meanwhile: "protocol fault (status 17 03 03 00?!)".
    void restartServer()
    {
        adb({u"kill-server"_s});
        adb({u"start-server"_s}); // a command that starts it says so in its error text
    }

private Q_SLOTS:
    void codeLeadsToAnInstalledBuild()
    {
        VirtualPhone &phone = addWirelessPhone();
        pair();
        QCOMPARE(model->status(), paired);
        QVERIFY(model->wireless());
        QCOMPARE(shown(phone, u"pairing"_s), QString()); // its port is closed
        const QString address = model->connectEndpoint();
        perform([this] { model->connect(); });
        QCOMPARE(model->status(), u"connected to "_s + address);
        QVERIFY(model->wireless());
        VERIFY_SOON((refresh(), model->selected() && model->selected()->ready()));
        QCOMPARE(model->selected()->transport(), u"Wi-Fi"_s);

        const QString build = makeBuild(u"demo.apk"_s, 3'000'000);
        model->acceptAPK(QUrl::fromLocalFile(build));
        perform([this] { model->install(); });
        QCOMPARE(model->status(), u"Installed demo.apk on %1. Existing app data was retained."_s.arg(address));
        VERIFY_SOON(!phone.closed(u"package 'install'"_s).isEmpty());
        QCOMPARE(phone.closed(u"package 'install'"_s).first()[u"sha256"_s].toString().toLatin1(),
                 QCryptographicHash::hash(contents(build), QCryptographicHash::Sha256).toHex());
    }

    void failedPairingIsToldAndTheNextTryWorks_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("address"); // instead of the pairing address
        QTest::addColumn<QString>("command"); // to the phone, before the try
        const QString none;
        QTest::newRow("wrong code") << u"493818"_s << none << none;
        QTest::newRow("connection port") << code << u"connection"_s << none;
        QTest::newRow("closed port") << code << none << u"wireless off"_s;
        QTest::newRow("goes away at the first word") << code << none << u"on 'wireless pairing' drop 1"_s;
        QTest::newRow("goes away with the keys known") << code << none << u"on 'wireless pairing' drop 1500"_s;
    }
    void failedPairingIsToldAndTheNextTryWorks()
    {
        QFETCH(QString, typed);
        QFETCH(QString, address);
        QFETCH(QString, command);
        VirtualPhone &phone = addWirelessPhone();
        if (!address.isEmpty())
            model->pairingEndpoint = shown(phone, address);
        if (!command.isEmpty())
            QVERIFY(phone.command(command).startsWith(u"ok"));
        const QString triedAddress = model->pairingEndpoint();
        pair(typed);
        checkFailure(pairing, noStatus);
        QCOMPARE(model->pairingEndpoint(), triedAddress);

        phone.command(u"off"_s);
        model->connectEndpoint = phone.command(u"wireless on"_s).section(u' ', 1);
        if (shown(phone, u"pairing"_s).isEmpty() || !address.isEmpty())
            showCode(phone);
        pairAndConnect();
    }

    void fiveDigitsAreNoCode()
    {
        addWirelessPhone();
        const QString address = model->pairingEndpoint();
        model->pairingCode = u"49381"_s;
        model->pair();
        QVERIFY(!model->busy());
        QCOMPARE(model->error(), std::optional(u"Use the pairing IP:port and six-digit code shown in Android Wireless "
                                               "debugging → Pair with pairing code."_s));
        QCOMPARE(model->pairingCode(), u"49381"_s);
        QCOMPARE(model->pairingEndpoint(), address);
        QVERIFY(model->wireless());
        model->error = std::nullopt;
        pairAndConnect();
    }

    void failedConnectionIsToldAndTheNextTryWorks_data()
    {
        QTest::addColumn<bool>("isPaired");
        QTest::addColumn<QString>("address"); // instead of the connection address
        QTest::addColumn<QString>("command"); // to the phone, before the try
        QTest::addColumn<QString>("words");
        const QString none;
        const QString failed = u"failed to connect to %1\n"_s;
        const QString refused = u"failed to connect to '%1': Connection refused\n"_s;
        QTest::newRow("never paired") << false << none << none << failed;
        QTest::newRow("forgotten") << true << none << u"forget"_s << failed;
        QTest::newRow("pairing port") << false << u"pairing"_s << none << failed;
        QTest::newRow("closed port") << true << none << u"wireless off"_s << refused;
        QTest::newRow("goes away in mid-handshake") << true << none << u"on 'wireless connection' drop 400"_s << failed;
    }
    void failedConnectionIsToldAndTheNextTryWorks()
    {
        QFETCH(bool, isPaired);
        QFETCH(QString, address);
        QFETCH(QString, command);
        QFETCH(QString, words);
        VirtualPhone &phone = addWirelessPhone();
        if (isPaired)
            pair();
        if (!address.isEmpty())
            model->connectEndpoint = shown(phone, address);
        if (!command.isEmpty())
            QVERIFY(phone.command(command).startsWith(u"ok"));
        const QString triedAddress = model->connectEndpoint();
        perform([this] { model->connect(); });
        checkFailure(connecting, words.arg(triedAddress));
        QCOMPARE(model->connectEndpoint(), triedAddress);
        restartServer();

        phone.command(u"off"_s);
        model->connectEndpoint = phone.command(u"wireless on"_s).section(u' ', 1);
        showCode(phone);
        pairAndConnect();
        VERIFY_SOON((refresh(), model->selected() && model->selected()->ready()));
    }

    void phoneThatDoesNotAnswerIsListedAsOffline()
    {
        VirtualPhone &phone = addWirelessPhone();
        pair();
        QCOMPARE(phone.command(u"on 'wireless connection' hang"_s), u"ok"_s);
        const QString address = model->connectEndpoint();
        perform([this] { model->connect(); });
        checkFailure(connecting, u"failed to connect to %1\n"_s.arg(address));
        // adb goes on waiting for it, and tries no other connection.
        phone.command(u"off"_s);
        perform([this] { model->connect(); });
        QCOMPARE(model->status(), u"already connected to "_s + address);
        QCOMPARE(model->selected()->state, u"offline"_s);

        phone.command(u"wireless off"_s);
        model->connectEndpoint = phone.command(u"wireless on"_s).section(u' ', 1);
        perform([this] { model->connect(); });
        QCOMPARE(model->status(), u"connected to "_s + model->connectEndpoint());
    }

    void phoneWithTheSameCodeIsNotPaired()
    {
        VirtualPhone &other = addWirelessPhone();
        const QString otherConnection = model->connectEndpoint();
        const QString otherPairing = model->pairingEndpoint();
        addWirelessPhone();
        pairAndConnect();
        QCOMPARE(shown(other, u"pairing"_s), otherPairing); // it still waits
        model->connectEndpoint = otherConnection;
        perform([this] { model->connect(); });
        checkFailure(connecting, u"failed to connect to %1\n"_s.arg(otherConnection));
        restartServer();
        model->pairingEndpoint = otherPairing;
        pairAndConnect();
    }

    void silentPhoneIsGivenUpAndTheCodeIsOnStandardInputOnly()
    {
        VirtualPhone &phone = addWirelessPhone();
        QCOMPARE(phone.command(u"on 'wireless pairing' hang"_s), u"ok"_s);
        const auto restore =
            qScopeGuard([former = qInstallMessageHandler(collectMessage)] { qInstallMessageHandler(former); });
        const QByteArray commandLine = "pair" + QByteArray(1, '\0') + model->pairingEndpoint().toUtf8();
        model->pairingCode = code;
        model->pair();
        VERIFY_SOON(anyContains(processes(u"cmdline"_s), commandLine));
        QVERIFY(!anyContains(processes(u"cmdline"_s), code.toUtf8()));
        QVERIFY(!anyContains(processes(u"environ"_s), code.toUtf8()));
        QCOMPARE(filesWithTheCode(), QStringList());
        QVERIFY(QTest::qWaitFor([this] { return !model->busy(); }, 55'000));
        checkFailure(pairing, u"The Android command timed out. Check the phone connection and try again."_s);
        for (const QString &text : messages + QStringList{model->status(), model->logs(), model->pairingCode()})
            QVERIFY2(!text.contains(code), qUtf8Printable(text));
        phone.command(u"off"_s);
        pairAndConnect();
    }
};

QTEST_GUILESS_MAIN(RealWirelessTest)
#include "RealWirelessTest.moc"
