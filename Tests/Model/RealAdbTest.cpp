// The model with the real adb client, against simulated phones: the main path of each action, and refusals.
#include "Support/RealAdbModelTest.h"

#include <QCoroTask>
#include <QCryptographicHash>
#include <QFile>
#include <QJsonObject>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::PhoneOptions;
using varda::VirtualPhone;

namespace {

const QString package = u"com.example.app"_s;

QString digest(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

/// The record of the one service of that name that has ended.
QJsonObject ended(const VirtualPhone &phone, const QString &service)
{
    varda::eventually([&] { return !phone.closed(service).isEmpty(); });
    return phone.closed(service).value(0);
}

} // namespace

class RealAdbTest : public RealAdbModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void firstListingStartsTheServer()
    {
        adb({u"kill-server"_s});
        refresh();
        QCOMPARE(model->error(), std::nullopt);
        QVERIFY2(!model->status().contains(u"timed out"), qUtf8Printable(model->status()));
        refresh();
        QVERIFY(!model->status().contains(u"daemon"));
    }

    void connectingSelectsThePhone()
    {
        VirtualPhone &phone = addPhone();
        model->connectEndpoint = u"  "_s + phone.endpoint() + u'\n';
        model->logging = true;
        model->logs = u"of no phone"_s;
        perform([this] { model->connect(); });
        QCOMPARE(model->status(), u"connected to "_s + phone.endpoint());
        QCOMPARE(model->selectedID(), std::optional(phone.endpoint()));
        QCOMPARE(model->logging(), false);
        QCOMPARE(model->logs(), QString());
        QCOMPARE(model->selected()->transport(), u"Wi-Fi"_s);
        perform([this] { model->connect(); });
        QCOMPARE(model->status(), u"already connected to "_s + phone.endpoint());
    }

    void listsPhonesInTheirStatesAndPrefersAPhoneToAnEmulator()
    {
        PhoneOptions options;
        for (options.port = 5585; options.port >= 5561; options.port = static_cast<quint16>(options.port - 2)) {
            phones.emplace_back(options);
            if (phones.back().errorString().isEmpty())
                break;
            phones.pop_back();
        }
        if (phones.empty())
            QSKIP("No port that adb takes for an emulator's is free.");
        VirtualPhone &emulator = phones.back();
        emulator.command(u"announce "_s + qEnvironmentVariable("ANDROID_ADB_SERVER_PORT"));
        options.port = 0;
        options.state = u"unauthorized"_s;
        VirtualPhone &unauthorized = addPhone(options);
        options.state = u"recovery"_s;
        options.model = u"Größe 7 Pro"_s;
        VirtualPhone &recovery = addPhone(options);
        adb({u"connect"_s, unauthorized.endpoint()});
        adb({u"connect"_s, recovery.endpoint()});
        QVERIFY(varda::eventually([&] {
            refresh();
            const auto first = listed(emulator.serial());
            return first && first->ready() && listed(recovery.serial()) && listed(unauthorized.serial());
        }));
        QCOMPARE(listed(emulator.serial())->transport(), u"Emulator"_s);
        QCOMPARE(listed(emulator.serial())->state, u"device"_s);
        QCOMPARE(listed(unauthorized.serial())->state, u"unauthorized"_s);
        QCOMPARE(listed(recovery.serial())->state, u"recovery"_s);

        model->selectedID = std::nullopt;
        refresh();
        QVERIFY(model->selected());
        QVERIFY2(!model->selected()->emulator(), qUtf8Printable(model->selected()->id));
        adb({u"disconnect"_s, unauthorized.endpoint()});
        adb({u"disconnect"_s, recovery.endpoint()});
        model->selectedID = std::nullopt;
        refresh();
        QVERIFY(model->selected());
        QVERIFY(model->selected()->emulator());
    }

    void failedConnectionIsToldInTheToolsWords_data()
    {
        QTest::addColumn<QString>("trouble");
        QTest::addColumn<QString>("words");
        QTest::newRow("nobody listens") << u"closed"_s << u"failed to connect to"_s;
        QTest::newRow("not authorized") << u"unauthorized"_s << u"failed to authenticate to"_s;
    }
    void failedConnectionIsToldInTheToolsWords()
    {
        QFETCH(QString, trouble);
        QFETCH(QString, words);
        PhoneOptions options;
        if (trouble == u"unauthorized")
            options.state = trouble;
        VirtualPhone &phone = addPhone(options);
        const QString endpoint = phone.endpoint();
        if (trouble == u"closed")
            phones.clear();
        model->connectEndpoint = endpoint;
        const QString status = u"Connecting over Wi-Fi…"_s;
        perform([this] { model->connect(); });
        QVERIFY(model->error());
        QVERIFY2(model->error()->contains(words), qUtf8Printable(*model->error()));
        QCOMPARE(model->status(), status + u" failed.");
        qInfo().noquote() << *model->error();
    }

    void pairingWithAPhoneThatCannotFailsWithoutTheCode()
    {
        VirtualPhone &phone = addPhone();
        model->pairingEndpoint = phone.endpoint();
        model->pairingCode = u"493817"_s;
        perform([this] { model->pair(); });
        QVERIFY(model->error());
        QVERIFY2(!model->error()->contains(u"493817"), qUtf8Printable(*model->error()));
        QCOMPARE(model->status(), u"Pairing with your Android phone… failed."_s);
        qInfo().noquote() << *model->error();
    }

    void installsTheFileByteForByte_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::newRow("a build") << u"demo-debug.apk"_s << 3'000'000;
        QTest::newRow("capitals, blanks, quotes") << u"De mo 'x' \"y\".APK"_s << 70'000;
        QTest::newRow("umlauts and CJK") << u"Größe 日本 👍.apk"_s << 70'001;
        QTest::newRow("255 bytes") << QString(251, u'x') + u".apk" << 1;
        QTest::newRow("shell characters") << u"$HOME;&`id`*.apk"_s << 65'536;
    }
    void installsTheFileByteForByte()
    {
        QFETCH(QString, name);
        QFETCH(int, size);
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        const QString build = makeBuild(name, size);
        model->acceptAPK(QUrl::fromLocalFile(build));
        perform([this] { model->install(); });
        QCOMPARE(model->error(), std::nullopt);
        QCOMPARE(model->status(),
                 u"Installed "_s + name + u" on " + phone.serial() + u". Existing app data was retained.");
        QFile file(build);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject record = ended(phone, u"package 'install'"_s);
        qInfo().noquote() << record.value(u"service"_s).toString() << record.value(u"sha256"_s).toString();
        QCOMPARE(record.value(u"sha256"_s).toString(), digest(file.readAll()));
        QCOMPARE(record.value(u"size"_s).toInteger(), size);
    }

    void refusedInstallIsToldInThePhonesWords()
    {
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        const QString words = u"Failure [INSTALL_FAILED_VERSION_DOWNGRADE: Größe]"_s;
        QCOMPARE(phone.command(u"on 'package install' output '%1\\n'"_s.arg(words)), u"ok"_s);
        model->acceptAPK(QUrl::fromLocalFile(makeBuild(u"demo.apk"_s, 1000)));
        perform([this] { model->install(); });
        QVERIFY(model->error());
        QVERIFY2(model->error()->contains(words), qUtf8Printable(*model->error()));
        QCOMPARE(model->status(), u"Installing demo.apk… failed."_s);
    }

    void deletedBuildIsToldInTheToolsWords()
    {
        connectTo(addPhone());
        const QString build = makeBuild(u"demo.apk"_s, 1000);
        model->acceptAPK(QUrl::fromLocalFile(build));
        QVERIFY(QFile::remove(build));
        perform([this] { model->install(); });
        QVERIFY(model->error());
        QVERIFY2(model->error()->contains(u"No such file or directory"), qUtf8Printable(*model->error()));
        QCOMPARE(model->status(), u"Installing demo.apk… failed."_s);
    }

    void missingAppHasNoLaunchableActivity()
    {
        connectTo(addPhone());
        model->packageName = u"com.example.missing"_s;
        perform([this] { model->appAction(true); });
        QCOMPARE(model->error(),
                 std::optional(u"No launchable activity found for com.example.missing. Check that the APK is "
                               "installed and includes a launcher activity."_s));
    }

    void deviceWideLogHoldsWhatIsWellFormedAndMarksTheRest()
    {
        VirtualPhone &phone = addPhone();
        connectTo(phone);
        QCOMPARE(phone.command(u"on logcat output 'größer 日本 \\xff\\xe2\\x82.\\n'"_s), u"ok"_s);
        model->logging = true;
        QCoro::waitFor(model->readLogs());
        QVERIFY2(model->logs().startsWith(u"größer 日本 "), qUtf8Printable(model->logs()));
        phone.command(u"off"_s);
        VERIFY_SOON((QCoro::waitFor(model->readLogs()), model->logs().contains(QChar(0xfffd))));
        QVERIFY(model->logs().count(u'\n') <= 351); // 350 lines, and one that names the buffer
        QVERIFY(model->logging());
        QCOMPARE(model->error(), std::nullopt);
    }

    void otherPhonesAreLeftAlone()
    {
        VirtualPhone &other = addPhone();
        VirtualPhone &phone = addPhone();
        connectTo(other);
        connectTo(phone);
        model->packageName = package;
        perform([this] { model->appAction(true); });
        QCOMPARE(model->status(), u"Launched com.example.app on "_s + phone.serial() + u'.');
        QVERIFY(!ended(phone, u"am "_s).isEmpty());
        for (const QJsonObject &record : other.log())
            QVERIFY2(!record.value(u"service"_s).toString().contains(u"am start"), "the other phone was asked");
    }
};

QTEST_GUILESS_MAIN(RealAdbTest)
#include "RealAdbTest.moc"
