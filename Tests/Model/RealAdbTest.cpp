// The model with the real adb client, against simulated phones: the main path of each action, and phones that vanish.
//
// adb's server of this test has a port, a home and a temporary folder of its own, and ends with the test.
#include "ModelTest.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QImage>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTcpServer>

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::AndroidDevice;
using varda::PhoneOptions;
using varda::ProcessCensus;
using varda::VardaModel;
using varda::VirtualPhone;

namespace {

const QString package = u"com.example.app"_s;

QString digest(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

} // namespace

class RealAdbTest : public QObject
{
    Q_OBJECT

private:
    /// Runs adb beside the model.
    void adb(const QStringList &arguments) const;
    /// Another phone, in use until the test function ends.
    VirtualPhone &addPhone(const PhoneOptions &options = {});
    /// Connects the model to the phone, which it then has selected.
    void connectTo(const VirtualPhone &phone);
    void perform(const std::function<void()> &start);
    void refresh() { QCoro::waitFor(model->refresh()); }
    std::optional<AndroidDevice> listed(const QString &serial) const;
    QString makeBuild(const QString &name, qsizetype size);
    QString path(const QString &name) const { return m_files->filePath(name); }
    /// The record of the one service of that name that has ended.
    static QJsonObject ended(const VirtualPhone &phone, const QString &service);
    static qint64 processOf(VirtualPhone &phone);

    QTemporaryDir m_home;
    QString m_adb;
    std::optional<QTemporaryDir> m_files;
    std::list<VirtualPhone> m_phones;
    std::optional<ProcessCensus> m_census;
    std::shared_ptr<DialogScript> dialogs;
    std::shared_ptr<VardaModel> model;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void firstListingStartsTheServer();
    void connectingSelectsThePhone();
    void listsPhonesInTheirStatesAndPrefersAPhoneToAnEmulator();
    void failedConnectionIsToldInTheToolsWords_data();
    void failedConnectionIsToldInTheToolsWords();
    void pairingWithAPhoneThatCannotFailsWithoutTheCode();
    void installsTheFileByteForByte_data();
    void installsTheFileByteForByte();
    void refusedInstallIsToldInThePhonesWords();
    void deletedBuildIsToldInTheToolsWords();
    void launchedAppIsFollowedInTheConsoleUntilItIsStopped();
    void missingAppHasNoLaunchableActivity();
    void listsTheInstalledPackages();
    void deviceWideLogHoldsWhatIsWellFormedAndMarksTheRest();
    void screenshotIsThePhonesPicture();
    void otherPhonesAreLeftAlone();
    void unpluggingEndsTheAction_data();
    void unpluggingEndsTheAction();
    void serverThatDiesUnderAnActionReleasesIt();
    void unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne_data();
    void unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne();
    void pollLoopSeesAPhoneGoAndComeBack();
};

void RealAdbTest::initTestCase()
{
    const QFileInfo staged(QStringLiteral(STAGED_TOOLS "/platform-tools/adb"));
    if (!staged.isExecutable())
        QSKIP("There is no adb at " STAGED_TOOLS "/platform-tools; Scripts/stage-tools puts it there.");
    const QString tools = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../lib/varda/Tools");
    QDir(tools).removeRecursively();
    QVERIFY(QDir().mkpath(tools));
    QVERIFY(QFile::link(staged.absolutePath(), tools + u"/platform-tools"));
    m_adb = tools + u"/platform-tools/adb";

    QTcpServer freePort;
    QVERIFY(freePort.listen(QHostAddress::LocalHost));
    qputenv("ANDROID_ADB_SERVER_PORT", QByteArray::number(freePort.serverPort()));
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("TMPDIR", QFile::encodeName(m_home.path()));
}

void RealAdbTest::cleanupTestCase()
{
    if (!m_adb.isEmpty())
        adb({u"kill-server"_s});
}

void RealAdbTest::init()
{
    m_files.emplace();
    dialogs = std::make_shared<DialogScript>();
    model = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    m_census.emplace();
}

void RealAdbTest::cleanup()
{
    const std::weak_ptr<VardaModel> watched = model;
    model->stop();
    model.reset();
    VERIFY_SOON(watched.expired());
    m_phones.clear();
    COMPARE_SOON(m_census->newcomers(), QStringList());
    adb({u"disconnect"_s});
    m_files.reset();
}

void RealAdbTest::adb(const QStringList &arguments) const
{
    QProcess process;
    process.start(m_adb, arguments, QIODevice::ReadOnly);
    QVERIFY(process.waitForFinished(20000));
}

VirtualPhone &RealAdbTest::addPhone(const PhoneOptions &options)
{
    VirtualPhone &phone = m_phones.emplace_back(options);
    if (!phone.errorString().isEmpty())
        qFatal("%s", qUtf8Printable(phone.errorString()));
    return phone;
}

void RealAdbTest::perform(const std::function<void()> &start)
{
    start();
    QVERIFY(model->busy());
    VERIFY_SOON(!model->busy());
}

void RealAdbTest::connectTo(const VirtualPhone &phone)
{
    model->connectEndpoint = phone.endpoint();
    perform([this] { model->connect(); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->selectedID(), std::optional(phone.serial()));
    // The phone is listed as offline for the moment between the connection and its banner.
    for (int i = 0; i < 100 && !model->selected()->ready(); ++i) {
        turnFor(std::chrono::milliseconds(50));
        refresh();
    }
    QVERIFY(model->selected()->ready());
}

std::optional<AndroidDevice> RealAdbTest::listed(const QString &serial) const
{
    for (const AndroidDevice &each : model->devices()) {
        if (each.id == serial)
            return each;
    }
    return std::nullopt;
}

QString RealAdbTest::makeBuild(const QString &name, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random(42);
    for (char &byte : bytes)
        byte = static_cast<char>(random.generate());
    QFile file(path(name));
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    return file.fileName();
}

QJsonObject RealAdbTest::ended(const VirtualPhone &phone, const QString &service)
{
    comesTrue([&] { return !phone.closed(service).isEmpty(); });
    return phone.closed(service).value(0);
}

qint64 RealAdbTest::processOf(VirtualPhone &phone)
{
    return phone.command(u"start "_s + package).section(u' ', 1).toLongLong();
}

void RealAdbTest::firstListingStartsTheServer()
{
    adb({u"kill-server"_s});
    refresh();
    QCOMPARE(model->error(), std::nullopt);
    QVERIFY2(!model->status().contains(u"timed out"), qUtf8Printable(model->status()));
    refresh();
    QVERIFY(!model->status().contains(u"daemon"));
}

void RealAdbTest::connectingSelectsThePhone()
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

void RealAdbTest::listsPhonesInTheirStatesAndPrefersAPhoneToAnEmulator()
{
    PhoneOptions options;
    for (options.port = 5585; options.port >= 5561; options.port = static_cast<quint16>(options.port - 2)) {
        m_phones.emplace_back(options);
        if (m_phones.back().errorString().isEmpty())
            break;
        m_phones.pop_back();
    }
    if (m_phones.empty())
        QSKIP("No port that adb takes for an emulator's is free.");
    VirtualPhone &emulator = m_phones.back();
    emulator.command(u"announce "_s + qEnvironmentVariable("ANDROID_ADB_SERVER_PORT"));
    options.port = 0;
    options.state = u"unauthorized"_s;
    VirtualPhone &unauthorized = addPhone(options);
    options.state = u"recovery"_s;
    options.model = u"Größe 7 Pro"_s;
    VirtualPhone &recovery = addPhone(options);
    adb({u"connect"_s, unauthorized.endpoint()});
    adb({u"connect"_s, recovery.endpoint()});
    for (int i = 0; i < 100; ++i) {
        refresh();
        const auto first = listed(emulator.serial());
        if (first && first->ready() && listed(recovery.serial()) && listed(unauthorized.serial()))
            break;
        turnFor(std::chrono::milliseconds(50));
    }
    QVERIFY(listed(emulator.serial()));
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

void RealAdbTest::failedConnectionIsToldInTheToolsWords_data()
{
    QTest::addColumn<QString>("trouble");
    QTest::addColumn<QString>("words");
    QTest::newRow("nobody listens") << u"closed"_s << u"failed to connect to"_s;
    QTest::newRow("not authorized") << u"unauthorized"_s << u"failed to authenticate to"_s;
}

void RealAdbTest::failedConnectionIsToldInTheToolsWords()
{
    QFETCH(QString, trouble);
    QFETCH(QString, words);
    PhoneOptions options;
    if (trouble == u"unauthorized")
        options.state = trouble;
    VirtualPhone &phone = addPhone(options);
    const QString endpoint = phone.endpoint();
    if (trouble == u"closed")
        m_phones.clear();
    model->connectEndpoint = endpoint;
    const QString status = u"Connecting over Wi-Fi…"_s;
    perform([this] { model->connect(); });
    QVERIFY(model->error());
    QVERIFY2(model->error()->contains(words), qUtf8Printable(*model->error()));
    QCOMPARE(model->status(), status + u" failed.");
    qInfo().noquote() << *model->error();
}

void RealAdbTest::pairingWithAPhoneThatCannotFailsWithoutTheCode()
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

void RealAdbTest::installsTheFileByteForByte_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("size");
    QTest::newRow("a build") << u"demo-debug.apk"_s << 3'000'000;
    QTest::newRow("capitals, blanks, quotes") << u"De mo 'x' \"y\".APK"_s << 70'000;
    QTest::newRow("umlauts and CJK") << u"Größe 日本 👍.apk"_s << 70'001;
    QTest::newRow("255 bytes") << QString(251, u'x') + u".apk" << 1;
    QTest::newRow("shell characters") << u"$HOME;&`id`*.apk"_s << 65'536;
}

void RealAdbTest::installsTheFileByteForByte()
{
    QFETCH(QString, name);
    QFETCH(int, size);
    VirtualPhone &phone = addPhone();
    connectTo(phone);
    const QString build = makeBuild(name, size);
    model->acceptAPK(QUrl::fromLocalFile(build));
    perform([this] { model->install(); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->status(), u"Installed "_s + name + u" on " + phone.serial() + u". Existing app data was retained.");
    QFile file(build);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject record = ended(phone, u"package 'install'"_s);
    qInfo().noquote() << record.value(u"service"_s).toString() << record.value(u"sha256"_s).toString();
    QCOMPARE(record.value(u"sha256"_s).toString(), digest(file.readAll()));
    QCOMPARE(record.value(u"size"_s).toInteger(), size);
}

void RealAdbTest::refusedInstallIsToldInThePhonesWords()
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

void RealAdbTest::deletedBuildIsToldInTheToolsWords()
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

void RealAdbTest::launchedAppIsFollowedInTheConsoleUntilItIsStopped()
{
    VirtualPhone &phone = addPhone();
    connectTo(phone);
    model->packageName = u" com.example.app\n"_s;
    QCoro::waitFor(model->readLogs());
    QCOMPARE(model->logs(), u"This app is not running. Launch it to see its logs."_s);

    perform([this] { model->appAction(true); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->status(), u"Launched com.example.app on "_s + phone.serial() + u'.');
    const qint64 pid = processOf(phone);
    QVERIFY(pid > 0);
    phone.command(u"log Mine 'a line of the app'"_s);
    QCoro::waitFor(model->readLogs());
    QVERIFY2(model->logs().contains(u"a line of the app"), qUtf8Printable(model->logs()));
    for (const QString &line : model->logs().split(u'\n', Qt::SkipEmptyParts)) {
        if (!line.startsWith(u"-----"))
            QCOMPARE(line.simplified().section(u' ', 2, 2).toLongLong(), pid);
    }

    perform([this] { model->appAction(false); });
    QCOMPARE(model->status(), u"Stopped com.example.app on "_s + phone.serial() + u'.');
    QCoro::waitFor(model->readLogs());
    QCOMPARE(model->logs(), u"This app is not running. Launch it to see its logs."_s);
}

void RealAdbTest::missingAppHasNoLaunchableActivity()
{
    connectTo(addPhone());
    model->packageName = u"com.example.missing"_s;
    perform([this] { model->appAction(true); });
    QCOMPARE(model->error(),
             std::optional(u"No launchable activity found for com.example.missing. Check that the APK is "
                           "installed and includes a launcher activity."_s));
}

void RealAdbTest::listsTheInstalledPackages()
{
    connectTo(addPhone());
    model->logging = true;
    perform([this] { model->listApps(); });
    QCOMPARE(model->status(), u"User-installed package IDs are shown in the console."_s);
    QStringList packages = model->logs().split(u'\n', Qt::SkipEmptyParts);
    packages.sort();
    QCOMPARE(packages, QStringList({u"com.example.app"_s, u"org.example.karten"_s}));
    QVERIFY(!model->logging());
}

void RealAdbTest::deviceWideLogHoldsWhatIsWellFormedAndMarksTheRest()
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

void RealAdbTest::screenshotIsThePhonesPicture()
{
    VirtualPhone &phone = addPhone();
    connectTo(phone);
    dialogs->locations = {path(u"Größe 1.png"_s)};
    perform([this] { model->screenshot(); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->status(), u"Screenshot saved to Größe 1.png."_s);
    const QJsonObject record = ended(phone, u"screencap"_s);
    QCOMPARE(QFileInfo(path(u"Größe 1.png"_s)).size(), record.value(u"sent"_s).toInteger());
    const QImage image(path(u"Größe 1.png"_s), "PNG");
    QCOMPARE(image.size(), QSize(720, 1600));
}

void RealAdbTest::otherPhonesAreLeftAlone()
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

void RealAdbTest::unpluggingEndsTheAction_data()
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
    row("launch, finding the activity", u"resolve-activity"_s, 0, launching, u"No launchable activity found for "_s);
    row("launch, starting the activity", u"am start"_s, 0, launching, {});
    row("stop", u"force-stop"_s, 0, u"Stopping app…"_s, {});
    row("screenshot, at its start", u"screencap"_s, 0, capturing, u"The phone did not return a valid PNG"_s);
    row("screenshot, on the way", u"screencap"_s, 1000, capturing, {});
    row("list", u"pm list"_s, 0, u"Reading installed apps…"_s, {});
}

void RealAdbTest::unpluggingEndsTheAction()
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

void RealAdbTest::serverThatDiesUnderAnActionReleasesIt()
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

void RealAdbTest::unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<int>("bytes");
    QTest::newRow("the log, at its start") << u"logcat"_s << 0;
    QTest::newRow("the log, on the way") << u"logcat"_s << 200;
    QTest::newRow("the process ID") << u"pidof"_s << 0;
}

void RealAdbTest::unpluggingDuringAReadTurnsTheConsoleOffAtTheNextOne()
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
    for (int i = 0; i < 100 && model->selected() && model->selected()->ready(); ++i) {
        turnFor(std::chrono::milliseconds(50));
        refresh();
    }
    QVERIFY(!model->selected() || !model->selected()->ready());
    QCOMPARE(model->selectedID(), std::optional(phone.serial()));
    QCoro::waitFor(model->readLogs());
    QVERIFY(!model->logging());
    QCOMPARE(model->error(), std::nullopt);
}

void RealAdbTest::pollLoopSeesAPhoneGoAndComeBack()
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

QTEST_GUILESS_MAIN(RealAdbTest)
#include "RealAdbTest.moc"
