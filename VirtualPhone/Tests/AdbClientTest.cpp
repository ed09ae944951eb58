// The real adb client against the simulated phone.
#include "Support/AdbServer.h"
#include "VirtualPhone.h"

#include <QCryptographicHash>
#include <QFile>
#include <QImage>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using varda::PhoneOptions;
using varda::VirtualPhone;
using varda::test::AdbServer;

namespace {

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

class AdbClientTest : public QObject
{
    Q_OBJECT

private:
    /// Runs adb on the connected phone.
    AdbServer::Result adb(const QStringList &arguments)
    {
        return m_adb->run(QStringList{u"-s"_s, m_phone->serial()} + arguments);
    }
    AdbServer::Result shell(const QString &command) { return adb({u"shell"_s, command}); }
    QByteArray devices() { return m_adb->run({u"devices"_s, u"-l"_s}).output; }

    void startPhone(const PhoneOptions &options = {})
    {
        m_phone.emplace(options);
        QCOMPARE(m_phone->errorString(), QString());
        m_connect = m_adb->run({u"connect"_s, m_phone->endpoint()});
    }

    QString packageFile(qsizetype size)
    {
        QByteArray content(size, Qt::Uninitialized);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(content.data()), size / 4);
        QFile file(m_adb->folder() + u"/Größe 4 'x'.apk"_s);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s", qUtf8Printable(file.errorString()));
        file.write(content);
        m_digest = sha256(content);
        return file.fileName();
    }

    std::optional<AdbServer> m_adb;
    std::optional<VirtualPhone> m_phone;
    AdbServer::Result m_connect;
    QString m_digest;

private Q_SLOTS:
    void initTestCase()
    {
        m_adb.emplace(QStringLiteral(ADB_PROGRAM));
        if (!m_adb->isAvailable())
            QSKIP("there is no adb at " ADB_PROGRAM "; Scripts/stage-tools puts it there");
    }

    void cleanup()
    {
        m_adb->run({u"disconnect"_s});
        m_phone.reset();
    }

    void connects()
    {
        startPhone();
        QCOMPARE(m_connect.output.split('\n').value(0), "connected to " + m_phone->endpoint().toUtf8());
        const QRegularExpression line(
            u"^%1 +device product:pixel_8 model:Pixel_8 device:pixel_8 transport_id:\\d+$"_s.arg(
                QRegularExpression::escape(m_phone->serial())),
            QRegularExpression::MultilineOption);
        QVERIFY2(line.match(QString::fromUtf8(devices())).hasMatch(), devices().constData());
    }

    void comesInOnceItIsAuthorized()
    {
        PhoneOptions options;
        options.state = u"unauthorized"_s;
        startPhone(options);
        QVERIFY2(m_connect.output.contains("failed to authenticate to"), m_connect.output.constData());
        QTRY_VERIFY(devices().contains(" unauthorized "));
        QCOMPARE(m_phone->command(u"authorize"_s), u"ok"_s);
        QTRY_VERIFY(devices().contains(" device product:"));
    }

    void isListedInItsState_data()
    {
        QTest::addColumn<QString>("state");
        QTest::newRow("recovery") << u"recovery"_s;
        QTest::newRow("sideload") << u"sideload"_s;
    }

    void isListedInItsState()
    {
        QFETCH(QString, state);
        PhoneOptions options;
        options.state = state;
        startPhone(options);
        const QByteArray listed = ' ' + state.toUtf8() + ' ';
        QTRY_VERIFY(devices().contains(listed));
        QVERIFY(shell(u"echo x"_s).exitCode != 0);
    }

    void announcesItselfAsAnEmulator()
    {
        PhoneOptions options;
        for (options.port = 5585; options.port >= 5575; options.port -= 2) {
            m_phone.emplace(options);
            if (m_phone->errorString().isEmpty())
                break;
        }
        if (!m_phone->errorString().isEmpty())
            QSKIP("no emulator port is free");
        const QByteArray serial = "emulator-" + QByteArray::number(m_phone->port() - 1);
        QCOMPARE(m_phone->serial().toUtf8(), serial);
        QCOMPARE(m_adb->run({u"start-server"_s}).exitCode, 0);
        QCOMPARE(m_phone->command(u"announce %1"_s.arg(m_adb->port())), u"ok"_s);
        QTRY_VERIFY(devices().contains(serial));
        QTRY_VERIFY(devices().contains(" device product:"));
    }

    void installedBytesAreTheFiles()
    {
        startPhone();
        const AdbServer::Result result = adb({u"install"_s, u"-r"_s, packageFile(5'000'000)});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.output.contains("Success"));
        QTRY_COMPARE(m_phone->closed(u"package 'install'"_s).size(), 1);
        const QJsonObject record = m_phone->closed(u"package 'install'"_s).first();
        QCOMPARE(record.value(u"sha256"_s), QJsonValue(m_digest));
        QCOMPARE(record.value(u"size"_s).toInteger(), 5'000'000);
        QCOMPARE(record.value(u"outcome"_s), QJsonValue(u"Success"_s));
    }

    void installFailsWithTheChosenWords()
    {
        startPhone();
        const QString failure = u"Failure [INSTALL_FAILED_VERSION_DOWNGRADE: Größe]"_s;
        QCOMPARE(m_phone->command(u"on 'package install' output '%1\\n'"_s.arg(failure)), u"ok"_s);
        const AdbServer::Result result = adb({u"install"_s, u"-r"_s, packageFile(100'000)});
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.error.contains(failure.toUtf8()), result.error.constData());
        QTRY_COMPARE(m_phone->closed(u"install"_s).value(0).value(u"sha256"_s), QJsonValue(m_digest));
    }

    void installEndsWhenThePhoneVanishes()
    {
        startPhone();
        QCOMPARE(m_phone->command(u"on 'package install' drop 1000000"_s), u"ok"_s);
        const AdbServer::Result result = adb({u"install"_s, u"-r"_s, packageFile(5'000'000)});
        QVERIFY(result.exitCode > 0);
        QVERIFY(!result.output.contains("Success"));
        QTRY_COMPARE(m_phone->closed(u"install"_s).value(0).value(u"outcome"_s), QJsonValue(u"incomplete"_s));
    }

    void launchesAndStopsAnApp()
    {
        startPhone();
        const AdbServer::Result resolved =
            shell(u"cmd package resolve-activity --brief -a android.intent.action.MAIN -c "
                  "android.intent.category.LAUNCHER -p com.example.app"_s);
        QCOMPARE(resolved.output.trimmed().split('\n').last(), QByteArray("com.example.app/.MainActivity"));
        QCOMPARE(shell(u"pidof com.example.app"_s).exitCode, 1);
        const AdbServer::Result started = shell(u"am start -W -n com.example.app/.MainActivity"_s);
        QCOMPARE(started.exitCode, 0);
        QVERIFY(started.output.contains("Status: ok\n"));
        QVERIFY(!started.output.contains("Error"));
        const QByteArray pid = shell(u"pidof com.example.app"_s).output.trimmed();
        QVERIFY(pid.toLongLong() > 0);
        QVERIFY(shell(u"am start -W -n com.example.app/.MainActivity"_s).output.contains("brought to the front"));
        QCOMPARE(shell(u"pidof com.example.app"_s).output.trimmed(), pid);
        const AdbServer::Result stopped = shell(u"am force-stop com.example.app"_s);
        QCOMPARE(stopped.exitCode, 0);
        QCOMPARE(stopped.output, QByteArray());
        QCOMPARE(shell(u"pidof com.example.app"_s).exitCode, 1);
    }

    void missingActivityIsAnErrorInWordsOnly()
    {
        startPhone();
        const AdbServer::Result result = shell(u"am start -W -n com.example.none/.Main"_s);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(
            result.output.contains("Error: Activity class {com.example.none/com.example.none.Main} does not exist.\n"));
        QCOMPARE(m_phone->command(u"install com.example.none none"_s), u"ok"_s);
        QCOMPARE(shell(u"cmd package resolve-activity --brief -p com.example.none"_s).output,
                 QByteArray("No activity found\n"));
    }

    void listsUserPackages()
    {
        startPhone();
        QCOMPARE(shell(u"pm list packages -3"_s).output,
                 QByteArray("package:com.example.app\npackage:org.example.karten\n"));
        QVERIFY(shell(u"pm list packages"_s).output.contains("package:com.android.settings\n"));
    }

    void shellReportsStatusAndErrorApart()
    {
        startPhone();
        const AdbServer::Result result = shell(u"nonsense"_s);
        QCOMPARE(result.exitCode, 127);
        QCOMPARE(result.output, QByteArray());
        QCOMPARE(result.error, QByteArray("/system/bin/sh: nonsense: inaccessible or not found\n"));
        QCOMPARE(m_phone->command(u"on pidof error 'bad\\n'"_s), u"ok"_s);
        QCOMPARE(m_phone->command(u"on pidof exit 3"_s), u"ok"_s);
        const AdbServer::Result scripted = shell(u"pidof x"_s);
        QCOMPARE(scripted.exitCode, 3);
        QCOMPARE(scripted.error, QByteArray("bad\n"));
    }

    void logHoldsTheLatestLinesAndOddBytes()
    {
        startPhone();
        const QByteArray log = adb({u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s}).output;
        const QList<QByteArray> lines = log.trimmed().split('\n');
        QCOMPARE(lines.size(), 351); // with the heading
        QCOMPARE(lines.first(), QByteArray("--------- beginning of main"));
        QVERIFY(log.contains("Grüße aus der Küche"));
        QVERIFY(log.contains("latin-1 \xfc and stray \xff\xfe\n"));
        const QRegularExpression format(u"^\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} +\\d+ +\\d+ [VDIWE] .+: "_s);
        for (const QByteArray &line : lines.mid(1))
            QVERIFY2(format.match(QString::fromUtf8(line)).hasMatch(), line.constData());
        QTRY_VERIFY(adb({u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s}).output != log);
    }

    void logOfOneProcessHoldsItsLinesOnly()
    {
        startPhone();
        const QByteArray pid = m_phone->command(u"start com.example.app"_s).mid(3).toUtf8();
        const QByteArray log =
            adb({u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s, u"--pid"_s, QString::fromUtf8(pid)})
                .output;
        QList<QByteArray> lines = log.trimmed().split('\n');
        QVERIFY(lines.size() > 3);
        lines.removeFirst();
        for (const QByteArray &line : lines)
            QCOMPARE(line.simplified().split(' ').value(2), pid);
    }

    void screenshotArrivesByteForByte()
    {
        startPhone();
        const AdbServer::Result result = adb({u"exec-out"_s, u"screencap"_s, u"-p"_s});
        QCOMPARE(result.exitCode, 0);
        QTRY_COMPARE(m_phone->closed(u"screencap"_s).size(), 1);
        QCOMPARE(m_phone->closed(u"screencap"_s).first().value(u"outputSha256"_s), QJsonValue(sha256(result.output)));
        const QImage image = QImage::fromData(result.output, "PNG");
        QCOMPARE(image.size(), QSize(720, 1600));
        shell(u"am start -W -n com.example.app/.MainActivity"_s);
        const QImage withApp = QImage::fromData(adb({u"exec-out"_s, u"screencap"_s, u"-p"_s}).output, "PNG");
        QVERIFY(withApp.pixel(700, 300) != image.pixel(700, 300));
    }

    void largeOutputArrivesWhole()
    {
        startPhone();
        QCOMPARE(m_phone->command(u"on screencap flood 33554433"_s), u"ok"_s);
        const AdbServer::Result result = adb({u"exec-out"_s, u"screencap"_s, u"-p"_s});
        QCOMPARE(result.output.size(), 33'554'433);
        QTRY_COMPARE(m_phone->closed(u"screencap"_s).value(0).value(u"outputSha256"_s),
                     QJsonValue(sha256(result.output)));
    }

    void outputIsPartialWhenThePhoneVanishes()
    {
        startPhone();
        QCOMPARE(m_phone->command(u"on screencap drop 1000"_s), u"ok"_s);
        QCOMPARE(adb({u"exec-out"_s, u"screencap"_s, u"-p"_s}).output.size(), 1000);
    }

    void filesComeBackAsTheyWerePushed()
    {
        startPhone();
        const QString source = packageFile(300'000);
        QCOMPARE(adb({u"push"_s, source, u"/data/local/tmp/pushed file"_s}).exitCode, 0);
        QCOMPARE(m_phone->closed(u"sync:"_s).first().value(u"sha256"_s), QJsonValue(m_digest));
        const QString target = m_adb->folder() + u"/back"_s;
        QCOMPARE(adb({u"pull"_s, u"/data/local/tmp/pushed file"_s, target}).exitCode, 0);
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(sha256(file.readAll()), m_digest);
        QVERIFY(adb({u"pull"_s, u"/data/local/tmp/missing"_s, target}).exitCode != 0);
    }

    void reverseForwardsAreKept()
    {
        startPhone();
        QCOMPARE(adb({u"reverse"_s, u"localabstract:a"_s, u"tcp:2000"_s}).exitCode, 0);
        QVERIFY(adb({u"reverse"_s, u"--list"_s}).output.contains("localabstract:a tcp:2000"));
        QVERIFY(adb({u"reverse"_s, u"--no-rebind"_s, u"localabstract:a"_s, u"tcp:2001"_s}).exitCode != 0);
        QCOMPARE(adb({u"reverse"_s, u"--remove"_s, u"localabstract:a"_s}).exitCode, 0);
        QVERIFY(adb({u"reverse"_s, u"--remove"_s, u"localabstract:a"_s}).exitCode != 0);
    }
};

QTEST_GUILESS_MAIN(AdbClientTest)

#include "AdbClientTest.moc"
