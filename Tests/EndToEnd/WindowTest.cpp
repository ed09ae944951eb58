// The shell and the whole window as the window manager, the keyboard and a screen reader meet them.
#include "Stage.h"
#include "Support/StandInTools.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QTest>

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

class WindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        stage = std::make_unique<Stage>(
            Programs{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = {}});
        QVERIFY2(stage->errorString().isEmpty(), qUtf8Printable(stage->errorString()));
        scrcpy = std::make_unique<StandInTool>(stage->scrcpyPath(), false);
        scrcpy->onAnything().hangs().exitsOnTermination(0);
        phone = std::make_unique<VirtualPhone>();
        QVERIFY2(phone->errorString().isEmpty(), qUtf8Printable(phone->errorString()));
        QVERIFY(stage->startVarda());
        window = std::make_unique<VardaWindow>(stage->varda().processId());
        QVERIFY(window->opens());
        QVERIFY(eventually([this] { return !mainWindow().isEmpty(); }));
    }

    void cleanup()
    {
        window.reset();
        stage.reset();
        phone.reset();
    }

    void opensAtItsFirstSizeAndKeepsItsMinimum()
    {
        const QString id = mainWindow();
        COMPARE_SOON(windowGeometry(id).size(), QSize(1180, 820));
        xdotool({u"windowsize"_s, id, u"400"_s, u"300"_s});
        COMPARE_SOON(windowGeometry(id).size(), QSize(980, 700));
        xdotool({u"windowsize"_s, id, u"1300"_s, u"900"_s});
        COMPARE_SOON(windowGeometry(id).size(), QSize(1300, 900));
    }

    /// Run on a laptop's screen, too.
    void opensWithinTheScreen()
    {
        QVERIFY(eventually([this] { return !sizeWithFrame(mainWindow()).isEmpty(); }));
        const QSize size = sizeWithFrame(mainWindow());
        const QSize screen = screenSize();
        qInfo() << "with its frame" << size << "on" << screen;
        QVERIFY(size.width() <= screen.width());
        QVERIFY(size.height() <= screen.height());
    }

    void endsInOrderAndStopsTheMirror_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<QString>("keys");
        QTest::newRow("closed by the window manager") << 0 << u"alt+F4"_s;
        QTest::newRow("Ctrl+Q") << 0 << u"ctrl+q"_s;
        QTest::newRow("SIGTERM") << SIGTERM << QString{};
        QTest::newRow("SIGINT") << SIGINT << QString{};
        QTest::newRow("SIGHUP") << SIGHUP << QString{};
    }
    void endsInOrderAndStopsTheMirror()
    {
        QFETCH(int, signal);
        QFETCH(QString, keys);
        QVERIFY(attachPhone());
        QVERIFY(window->press(u"Open live phone"_s));
        COMPARE_SOON(scrcpy->calls().size(), 1);
        const auto ended = [this] { return stage->varda().state() == QProcess::NotRunning; };
        if (keys.isEmpty()) {
            kill(static_cast<pid_t>(stage->varda().processId()), signal);
            QVERIFY(eventually(ended));
        } else {
            QVERIFY(pressUntil(keys, u"Varda"_s, ended));
        }
        QCOMPARE(stage->varda().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stage->varda().exitCode(), 0);
        VERIFY_SOON(scrcpy->calls().first().ended);
        QCOMPARE(scrcpy->calls().first().terminationRequests, 1);
        stage->killServer();
        eventually([this] { return stage->leftovers().isEmpty(); });
        QCOMPARE(stage->leftovers(), QStringList{});
    }

    void showsItsProductInformation()
    {
        QVERIFY(activate(mainWindow()));
        // F1 by the key's number. xdotool takes from a keyboard layout which modifiers a symbol needs, and presses Alt
        // with F1 if the layout says, as newer ones do, that Alt leaves F1 as it is.
        pressKeys({u"67"_s});
        const auto title = u"Varda by Halvex"_s;
        QVERIFY(window->await(u"label"_s, title));
        QVERIFY(window->await(u"link"_s, u"Android debugging documentation"_s));
        pressKeys({u"Escape"_s});
        QVERIFY(window->hides(title));

        // The same from the application menu.
        QVERIFY(window->press(u"Main menu"_s));
        // Qt tells of an open menu by events only, so its items are not in the tree: the keyboard goes to the last but
        // one.
        QVERIFY(eventually([this] { return visibleWindows(stage->varda().processId()).size() > 1; }));
        pressKeys({u"Up"_s, u"Up"_s, u"Return"_s});
        QVERIFY(window->shows(title));
    }

    void worksByItsShortcuts()
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

private:
    /// Attaches the phone and waits until the window has selected it.
    /// Repeated, for where this adb and the window's first one start the server at the same moment, one of them fails.
    bool attachPhone()
    {
        const auto connected = [this] {
            return stage->adb({u"connect"_s, phone->endpoint()}).contains(u"connected to"_s);
        };
        return eventually(connected) && window->lists({phone->serial()}) && window->shows(u"Ready for testing"_s);
    }

    QString mainWindow() const { return visibleWindows(stage->varda().processId(), u"Varda"_s).value(0); }

    /// Presses `keys` in the window of that title, and again while `done` does not come true, as a user would: the
    /// window manager may miss them while another window takes the focus.
    bool pressUntil(const QString &keys, const QString &title, const std::function<bool()> &done) const
    {
        return eventually([&] {
            const QString id = visibleWindows(stage->varda().processId(), title).value(0);
            if (!id.isEmpty() && activate(id))
                pressKeys({keys});
            return eventually(done, 5s);
        });
    }

    std::unique_ptr<Stage> stage;
    std::unique_ptr<StandInTool> scrcpy;
    std::unique_ptr<VirtualPhone> phone;
    std::unique_ptr<VardaWindow> window;
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::WindowTest)
#include "WindowTest.moc"
