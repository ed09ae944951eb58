// The shell and the whole window as the window manager, the keyboard and a screen reader meet them.
#include "Stage.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QFile>
#include <QSet>
#include <QTest>

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

// More presses than the window has stops, several times over.
constexpr auto mostTabs = 60;

QByteArray contents(const QString &path)
{
    QFile file{path};
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray{};
}

} // namespace

class ShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void opensAtItsFirstSizeAndKeepsItsMinimum();
    void opensWithinTheScreen();
    void endsInOrderAndStopsTheMirror_data();
    void endsInOrderAndStopsTheMirror();
    void showsItsProductInformation();
    void namesWhatItShows();
    void reachesEveryControlByTab();
    void worksByItsShortcuts();
    void keepsThePairingCodeToItself();

private:
    /// Attaches the phone and waits until the window has selected it.
    bool attachPhone();
    QString mainWindow() const;
    /// Presses `keys` in the window of that title, and again while `done` does not come true, as a user would: the
    /// window manager may miss them while another window takes the focus.
    bool pressUntil(const QString &keys, const QString &title, const std::function<bool()> &done) const;
    /// Name and role of what has the keyboard focus, as "role: name".
    QString focus() const;

    std::unique_ptr<Stage> stage;
    std::unique_ptr<VirtualPhone> phone;
    std::unique_ptr<VardaWindow> window;
};

void ShellTest::init()
{
    stage = std::make_unique<Stage>(Programs{.varda = QStringLiteral(VARDA_PROGRAM),
                                             .adb = QStringLiteral(STAGED_ADB),
                                             .scrcpy = QStringLiteral(STAND_IN_SCRCPY)});
    QVERIFY2(stage->errorString().isEmpty(), qUtf8Printable(stage->errorString()));
    phone = std::make_unique<VirtualPhone>();
    QVERIFY2(phone->errorString().isEmpty(), qUtf8Printable(phone->errorString()));
    QVERIFY(stage->startVarda());
    window = std::make_unique<VardaWindow>(stage->varda().processId());
    QVERIFY(window->opens());
    QVERIFY(eventually([this] { return !mainWindow().isEmpty(); }));
}

void ShellTest::cleanup()
{
    window.reset();
    stage.reset();
    phone.reset();
}

/// Repeated, for where this adb and the window's first one start the server at the same moment, one of them fails.
bool ShellTest::attachPhone()
{
    const auto connected = [this] { return stage->adb({u"connect"_s, phone->endpoint()}).contains(u"connected to"_s); };
    return eventually(connected) && window->lists({phone->serial()}) && window->shows(u"Ready for testing"_s);
}

QString ShellTest::mainWindow() const
{
    return visibleWindows(stage->varda().processId(), u"Varda"_s).value(0);
}

bool ShellTest::pressUntil(const QString &keys, const QString &title, const std::function<bool()> &done) const
{
    return eventually([&] {
        const QString id = visibleWindows(stage->varda().processId(), title).value(0);
        if (!id.isEmpty() && activate(id))
            pressKeys({keys});
        return eventually(done, 5s);
    });
}

QString ShellTest::focus() const
{
    const Accessible focused =
        Accessible::application(stage->varda().processId()).find([](const Accessible &candidate) {
            return candidate.focused();
        });
    return focused ? focused.role() + u": " + focused.name() : QString{};
}

void ShellTest::opensAtItsFirstSizeAndKeepsItsMinimum()
{
    const QString id = mainWindow();
    QTRY_COMPARE_WITH_TIMEOUT(windowGeometry(id).size(), QSize(1180, 820), 90'000);
    xdotool({u"windowsize"_s, id, u"400"_s, u"300"_s});
    QTRY_COMPARE_WITH_TIMEOUT(windowGeometry(id).size(), QSize(980, 700), 90'000);
    xdotool({u"windowsize"_s, id, u"1300"_s, u"900"_s});
    QTRY_COMPARE_WITH_TIMEOUT(windowGeometry(id).size(), QSize(1300, 900), 90'000);
}

/// Run on a laptop's screen, too.
void ShellTest::opensWithinTheScreen()
{
    QVERIFY(eventually([this] { return !sizeWithFrame(mainWindow()).isEmpty(); }));
    const QSize size = sizeWithFrame(mainWindow());
    const QSize screen = screenSize();
    qInfo() << "with its frame" << size << "on" << screen;
    QVERIFY(size.width() <= screen.width());
    QVERIFY(size.height() <= screen.height());
}

void ShellTest::endsInOrderAndStopsTheMirror_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("keys");
    QTest::newRow("closed by the window manager") << 0 << u"alt+F4"_s;
    QTest::newRow("Ctrl+Q") << 0 << u"ctrl+q"_s;
    QTest::newRow("SIGTERM") << SIGTERM << QString{};
    QTest::newRow("SIGINT") << SIGINT << QString{};
    QTest::newRow("SIGHUP") << SIGHUP << QString{};
}

void ShellTest::endsInOrderAndStopsTheMirror()
{
    QFETCH(int, signal);
    QFETCH(QString, keys);
    QVERIFY(attachPhone());
    QVERIFY(window->press(u"Open live phone"_s));
    QVERIFY(eventually([this] { return QFile::exists(stage->home(u"scrcpy-arguments"_s)); }));
    const auto ended = [this] { return stage->varda().state() == QProcess::NotRunning; };
    if (keys.isEmpty()) {
        kill(static_cast<pid_t>(stage->varda().processId()), signal);
        QVERIFY(eventually(ended));
    } else {
        QVERIFY(pressUntil(keys, u"Varda"_s, ended));
    }
    QCOMPARE(stage->varda().exitStatus(), QProcess::NormalExit);
    QCOMPARE(stage->varda().exitCode(), 0);
    QVERIFY(eventually([this] { return !contents(stage->home(u"scrcpy-end"_s)).isEmpty(); }));
    QCOMPARE(contents(stage->home(u"scrcpy-end"_s)), QByteArray::number(SIGTERM));
    stage->killServer();
    eventually([this] { return stage->leftovers().isEmpty(); });
    QCOMPARE(stage->leftovers(), QStringList{});
}

void ShellTest::showsItsProductInformation()
{
    QVERIFY(activate(mainWindow()));
    pressKeys({u"F1"_s});
    const QStringList texts{
        u"Varda by Halvex"_s, u"Local development build · Apple Silicon · macOS 13+"_s,
        u"ADB and scrcpy run locally. No account, cloud relay or analytics. Phone access requires your Android USB "
        u"debugging authorization. Wi-Fi uses Android’s pairing-code workflow."_s};
    for (const QString &text : texts)
        QVERIFY(window->await(u"label"_s, text));
    QVERIFY(window->await(u"link"_s, u"Android debugging documentation"_s));
    pressKeys({u"Escape"_s});
    QVERIFY(window->hides(texts.first()));

    // The same from the application menu.
    QVERIFY(window->press(u"Main menu"_s));
    // Qt tells of an open menu by events only, so its items are not in the tree: the keyboard goes to the last but one.
    QVERIFY(eventually([this] { return visibleWindows(stage->varda().processId()).size() > 1; }));
    pressKeys({u"Up"_s, u"Up"_s, u"Return"_s});
    QVERIFY(window->shows(texts.first()));
}

void ShellTest::namesWhatItShows()
{
    QVERIFY(attachPhone());
    const QList<std::pair<QString, QString>> expected{
        {u"label"_s, u"Varda"_s},
        {u"label"_s, u"HALVEX / ANDROID WORKSPACE"_s},
        {u"label"_s, u"DEVICES"_s},
        {u"push button"_s, u"Refresh devices"_s},
        {u"push button"_s, u"Connect over Wi-Fi"_s},
        {u"label"_s, u"Real hardware. Real results."_s},
        {u"label"_s,
         u"USB first. Authorize this Mac on your phone, then install and test your own development APKs."_s},
        {u"label"_s, u"LOCAL BUILD / 0.1"_s},
        {u"label"_s, u"Your Android. On your Mac."_s},
        {u"label"_s, u"Deploy. Control. Inspect. Repeat."_s},
        {u"label"_s, u"Pixel 8"_s},
        {u"label"_s, u"Wi-Fi"_s},
        {u"label"_s, u"Ready for testing"_s},
        {u"label"_s, u"01 / DEPLOY A BUILD"_s},
        {u"label"_s, u"Drop your APK here"_s},
        {u"label"_s, u"Install an Android development build on the selected device. Updates keep the app’s existing "
                     u"data."_s},
        {u"push button"_s, u"Choose APK"_s},
        {u"push button"_s, u"Install on device"_s},
        {u"label"_s, u"02 / LIVE PHONE"_s},
        {u"label"_s, u"Control the real screen."_s},
        {u"label"_s, u"Opens a real scrcpy window. Use your Mac’s mouse and keyboard, or save a recording of your test "
                     u"session."_s},
        {u"push button"_s, u"Open live phone"_s},
        {u"push button"_s, u"Record test"_s},
        {u"label"_s, u"03 / TEST YOUR APPLICATION"_s},
        {u"text"_s, u"Package ID"_s},
        {u"push button"_s, u"Launch"_s},
        {u"push button"_s, u"Stop app"_s},
        {u"push button"_s, u"List apps"_s},
        {u"push button"_s, u"Screenshot"_s},
        {u"label"_s, u"DEVICE CONSOLE"_s},
        {u"push button"_s, u"Start logs"_s},
        {u"push button"_s, u"Export"_s},
        {u"text"_s, u"Device console"_s},
        {u"label"_s, u"Latest 350 lines · refreshes every 2.5s"_s},
        {u"label"_s, u"USB setup: Android Settings → About phone → tap Build number 7 times → Developer options → USB "
                     u"debugging. Use a data cable, unlock the phone and allow this computer. An emulator is shown "
                     u"separately and is never presented as a real phone test."_s},
    };
    const QString tree = window->tree();
    qInfo().noquote() << u"The tree:\n"_s + tree;
    for (const auto &[role, name] : expected)
        QVERIFY2(tree.contains(role + u" \"" + name + u'"'), qUtf8Printable(role + u" \"" + name + u"\" in\n" + tree));
    for (const QString &fact : {u"Pixel 8"_s, u"Wi-Fi"_s, phone->serial(), u"device"_s})
        QVERIFY2(window->lists({fact}), qUtf8Printable(fact));
    QCOMPARE(window->look(u"text"_s, u"Device console"_s).text(),
             u"Device output will appear here. Enter a package ID to limit logs to your running app."_s);

    QVERIFY(window->press(u"Connect over Wi-Fi"_s));
    for (const auto &[role, name] : QList<std::pair<QString, QString>>{
             {u"label"_s, u"Go wireless."_s},
             {u"push button"_s, u"Done"_s},
             {u"label"_s, u"Android 11+ · same Wi-Fi network. On the phone, open Developer options → Wireless "
                          u"debugging. Pairing and connection use different ports."_s},
             {u"label"_s, u"1. Pair with pairing code"_s},
             {u"text"_s, u"Pairing address"_s},
             {u"password text"_s, u"Pairing code"_s},
             {u"push button"_s, u"Pair this Mac"_s},
             {u"label"_s, u"2. Connect using the main screen’s address"_s},
             {u"text"_s, u"Connection address"_s},
             {u"push button"_s, u"Connect phone"_s},
         })
        QVERIFY2(window->await(role, name), qUtf8Printable(name));
}

void ShellTest::reachesEveryControlByTab()
{
    QVERIFY(attachPhone());
    // Everything is enabled once a build is chosen and the console holds something.
    QFile build{stage->home(u"demo.apk"_s)};
    QVERIFY(build.open(QIODevice::WriteOnly));
    build.close();
    QVERIFY(window->press(u"Choose APK"_s));
    QVERIFY(window->answerFileDialog(build.fileName()));
    QVERIFY(window->press(u"List apps"_s));
    QVERIFY(window->statusBecomes(u"User-installed package IDs are shown in the console."_s));
    QVERIFY(window->buttonBecomes(u"Export"_s, true));

    QSet<QString> missing;
    for (const QString &name : {u"Main menu"_s, u"Refresh devices"_s, u"Connect over Wi-Fi"_s, u"Choose APK"_s,
                                u"Install on device"_s, u"Open live phone"_s, u"Record test"_s, u"Launch"_s,
                                u"Stop app"_s, u"List apps"_s, u"Screenshot"_s, u"Start logs"_s, u"Export"_s})
        missing << u"push button: "_s + name;
    missing << u"text: Package ID"_s << u"text: Device console"_s
            << u"status bar: User-installed package IDs are shown in the console."_s;
    missing << u"radio button: Pixel 8, Wi-Fi, "_s + phone->serial() + u", device";

    QVERIFY(activate(mainWindow()));
    QStringList walk;
    for (int i = 0; i < mostTabs && !missing.isEmpty(); ++i) {
        const QString before = focus();
        pressKeys({u"Tab"_s});
        QVERIFY2(eventually([&] { return !focus().isEmpty() && focus() != before; }),
                 qUtf8Printable(u"Tab leads nowhere from "_s + before));
        walk << focus();
        missing.remove(walk.last());
    }
    qInfo().noquote() << u"The tab order:\n  "_s + walk.join(u"\n  "_s);
    QVERIFY2(missing.isEmpty(), qUtf8Printable(QStringList{missing.values()}.join(u", "_s)));
}

void ShellTest::worksByItsShortcuts()
{
    QVERIFY(attachPhone());
    QVERIFY(activate(mainWindow()));
    pressKeys({u"ctrl+o"_s});
    QVERIFY(window->await(u"text"_s, u"File name:"_s));
    pressKeys({u"Escape"_s});
    QVERIFY(eventually([this] { return !window->look(u"text"_s, u"File name:"_s); }));
    pressKeys({u"ctrl+shift+w"_s});
    QVERIFY(window->shows(u"Go wireless."_s));
    // The window manager's close and Escape end the sheet as "Done" does.
    pressKeys({u"Escape"_s});
    QVERIFY(window->hides(u"Go wireless."_s));
    pressKeys({u"ctrl+shift+w"_s});
    QVERIFY(window->shows(u"Go wireless."_s));
    QVERIFY(pressUntil(u"alt+F4"_s, u"Go wireless"_s,
                       [this] { return visibleWindows(stage->varda().processId(), u"Go wireless"_s).isEmpty(); }));
    QVERIFY(window->hides(u"Go wireless."_s));
    QCOMPARE(stage->varda().state(), QProcess::Running);
}

void ShellTest::keepsThePairingCodeToItself()
{
    const auto code = u"407182"_s;
    QVERIFY(activate(mainWindow()));
    pressKeys({u"ctrl+shift+w"_s});
    const Accessible field = window->await(u"password text"_s, u"Pairing code"_s);
    QVERIFY(field.grabFocus());
    QVERIFY(eventually([&] { return field.focused(); }));
    typeText(code);
    QVERIFY(eventually([&] { return field.characterCount() == code.size(); }));
    const QString tree = window->tree();
    QVERIFY2(!tree.contains(code), qUtf8Printable(tree));

    // Copying it out gives nothing either: what is pasted into a readable field is not the code.
    pressKeys({u"ctrl+a"_s, u"ctrl+c"_s, u"ctrl+x"_s});
    const Accessible readable = window->await(u"text"_s, u"Pairing address"_s);
    QVERIFY(readable.grabFocus());
    QVERIFY(eventually([&] { return readable.focused(); }));
    pressKeys({u"ctrl+v"_s, u"x"_s});
    QVERIFY(eventually([&] { return readable.text().endsWith(u'x'); }));
    QCOMPARE(readable.text(), u"x"_s);
}

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::ShellTest)
#include "ShellTest.moc"
