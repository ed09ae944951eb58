// The shell: the program comes up with one window, and every way to end it ends it in order.
#include "Support/StandInTools.h"
#include "Support/Wait.h"
#include "Varda/App/VardaApp.h"
#include "Varda/View/Widgets/VardaStyle.h"

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

constexpr int guard = 20000; // ms

QWidget *topLevel(const QString &name)
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == name)
            return widget;
    }
    return nullptr;
}

/// One life of the program: runs it with a window in the state `state`, calls `during` once that is up or minimized,
/// and `afterwards` once it has run, and answers how it ended.
struct Life
{
    int status = -1;
    int quits = 0; ///< how often the program announced its end
    bool inTime = true;

    explicit Life(
        const std::function<void(QWidget *)> &during, const std::optional<QUrl> &file = std::nullopt,
        const std::function<void()> &afterwards = [] {}, Qt::WindowState state = Qt::WindowNoState)
    {
        int count = 1;
        QByteArray name("varda");
        std::array<char *, 2> arguments{name.data(), nullptr};
        VardaApp app(count, arguments.data());
        topLevel(u"workspace"_s)->setWindowState(state);
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, qApp, [this] { ++quits; });
        QTimer::singleShot(guard, qApp, [this] {
            inTime = false;
            QCoreApplication::exit(99);
        });
        QTimer::singleShot(0, qApp, [&during, state] {
            QWidget *window = topLevel(u"workspace"_s);
            if (state != Qt::WindowMinimized) {
                if (!QTest::qWaitForWindowExposed(window))
                    qFatal("the window did not come up");
                window->activateWindow();
                if (!QTest::qWaitForWindowActive(window))
                    qFatal("the window did not become active");
            }
            during(window);
        });
        status = app.run(file);
        afterwards();
    }

    bool inOrder() const { return inTime && status == 0 && quits == 1; }
};

/// The file name of the chosen build, as the window shows it; empty if it shows none.
QString shownBuild(QWidget *window)
{
    const auto *name = window->findChild<QLabel *>(u"apkName"_s);
    return name->isVisible() ? name->text() : QString();
}

/// An empty file called `name` in `directory`.
QUrl madeBuild(const QTemporaryDir &directory, const QString &name)
{
    QFile file(directory.filePath(name));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write %s", qPrintable(file.fileName()));
    return QUrl::fromLocalFile(file.fileName());
}

QPushButton *button(QWidget *window, const char *name)
{
    return window->findChild<QPushButton *>(QString::fromLatin1(name));
}

} // namespace

class ShellTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsInOrder_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("closed window") << 0;
        QTest::newRow("Ctrl+Q") << -1;
        QTest::newRow("menu") << -2;
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
    void endsInOrder()
    {
        QFETCH(int, signal);
        const Life life([signal](QWidget *window) {
            if (signal > 0)
                ::raise(signal);
            else if (signal == 0)
                window->close();
            else if (signal == -1)
                QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
            else
                window->findChild<QAction *>(u"quitAction"_s)->trigger();
        });
        QVERIFY(life.inOrder());
    }

    void endsWithDialogsOpen_data()
    {
        QTest::addColumn<bool>("bySignal");
        QTest::newRow("Ctrl+Q") << false;
        QTest::newRow("SIGTERM") << true;
    }
    void endsWithDialogsOpen()
    {
        QFETCH(bool, bySignal);
        const Life life([bySignal](QWidget *window) {
            button(window, "wirelessButton")->click();
            QWidget *sheet = window->findChild<QWidget *>(u"wirelessSheet"_s);
            QTRY_VERIFY(sheet->isVisible());
            QTRY_COMPARE(QApplication::activeWindow(), sheet);
            button(sheet, "connectButton")->click(); // an empty address: an error
            QWidget *alert = window->findChild<QWidget *>(u"alert"_s);
            QTRY_VERIFY(alert->isVisible());
            QTRY_COMPARE(QApplication::activeWindow(), alert);
            if (bySignal)
                ::raise(SIGTERM);
            else
                QTest::keyClick(alert, Qt::Key_Q, Qt::ControlModifier);
        });
        QVERIFY(life.inOrder());
    }

    void endsInsideAFileDialog()
    {
        bool opened = false;
        const Life life([&opened](QWidget *window) {
            QTimer::singleShot(0, window, [&opened] {
                QTRY_VERIFY(topLevel(u"fileDialog"_s) && topLevel(u"fileDialog"_s)->isVisible());
                opened = true;
                ::raise(SIGTERM);
            });
            button(window, "chooseButton")->click(); // returns when the dialog is closed
        });
        QVERIFY(opened);
        QVERIFY(life.inOrder());
    }

    /// In a minimized window: the model starts without a picture, too. The one test that runs commands, for the threads
    /// that wait for them end with the first application object.
    void endsAMirrorThatIsOpenedInTheLastMoment()
    {
        std::optional<test::StandInTools> tools;
        bool drawn = true;
        bool ended = false;
        const auto openMirrorWhileQuitting = [&](QWidget *window) {
            tools.emplace();
            tools->adb().onAnything().prints("List of devices attached\nR58M42ABCDE\tdevice\n");
            tools->scrcpy().onAnything().hangs().exitsOnTermination(0);
            auto *livePhone = window->findChild<QAction *>(u"livePhoneAction"_s);
            QTRY_VERIFY(livePhone->isEnabled());
            drawn = window->windowHandle()->isExposed();
            QCoreApplication::exit(0);
            livePhone->trigger();
            QTRY_COMPARE(tools->scrcpy().calls().size(), 1);
        };
        const auto waitForMirror = [&] {
            ended = eventually([&] { return tools->scrcpy().calls().value(0).ended; });
            tools.reset();
        };
        const Life life(openMirrorWhileQuitting, std::nullopt, waitForMirror, Qt::WindowMinimized);
        QVERIFY(!drawn);
        QVERIFY(ended);
        QVERIFY(life.inOrder());
    }

    void endsWithTheAboutPaneOpen()
    {
        const Life life([](QWidget *window) {
            window->findChild<QAction *>(u"aboutAction"_s)->trigger();
            QTRY_VERIFY(topLevel(u"aboutPane"_s)->isVisible());
            window->close();
        });
        QVERIFY(life.inOrder());
    }

    void opensAboutFromMenuAndKey()
    {
        const Life life([](QWidget *window) {
            QWidget *about = topLevel(u"aboutPane"_s);
            QVERIFY(!about->isVisible());
            QTest::keyClick(window, Qt::Key_F1);
            QVERIFY(about->isVisible());
            QCOMPARE(about->windowTitle(), u"About Varda"_s);
            QVERIFY(QTest::qWaitForWindowActive(about));
            QTest::keyClick(about, Qt::Key_Escape);
            QVERIFY(!about->isVisible());
            window->findChild<QAction *>(u"aboutAction"_s)->trigger();
            QVERIFY(about->isVisible());
            ::raise(SIGTERM);
        });
        QVERIFY(life.inOrder());
    }

    void saysWhoItIs()
    {
        const Life life([](QWidget *window) {
            QCOMPARE(QCoreApplication::applicationName(), u"varda"_s);
            QCOMPARE(QGuiApplication::applicationDisplayName(), u"Varda"_s);
            QCOMPARE(QGuiApplication::desktopFileName(), u"varda"_s);
            QCOMPARE(window->windowTitle(), u"Varda"_s);
            QTRY_VERIFY(!window->windowIcon().isNull()); // after the first picture
            QCOMPARE(window->size(), QSize(1180, 820));
            ::raise(SIGTERM);
        });
        QVERIFY(life.inOrder());
    }

    void dressesDark()
    {
        const Life life([](QWidget *window) {
            QVERIFY(qobject_cast<VardaStyle *>(QApplication::style()));
            QVERIFY(window->palette().color(QPalette::Window).lightness() < 60);
            QVERIFY(window->palette().color(QPalette::WindowText).lightness() > 200);
            ::raise(SIGTERM);
        });
        QVERIFY(life.inOrder());
    }

    void leavesNoSettingsBehind()
    {
        const QString settings =
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/QtProject.conf"_s;
        QVERIFY2(!QFile::exists(settings), "run this test with a home folder of its own");
        const Life life([](QWidget *window) {
            QTimer::singleShot(0, window, [] {
                QTRY_VERIFY(topLevel(u"fileDialog"_s) && topLevel(u"fileDialog"_s)->isVisible());
                static_cast<QDialog *>(topLevel(u"fileDialog"_s))->reject();
            });
            button(window, "chooseButton")->click();
            ::raise(SIGTERM);
        });
        QVERIFY(life.inOrder());
        QVERIFY(!QFile::exists(settings));
    }

    void opensTheFileThatItIsGiven()
    {
        const QTemporaryDir directory;
        bool shown = false;
        const Life life(
            [&shown](QWidget *window) {
                shown = QTest::qWaitFor([window] { return shownBuild(window) == u"first.apk"; });
                window->close();
            },
            madeBuild(directory, u"first.apk"_s));
        QVERIFY(shown);
        QVERIFY(life.inOrder());
    }

    void refusesAFileThatIsNoBuild()
    {
        QString shown = u"unseen"_s;
        const Life life(
            [&shown](QWidget *window) {
                auto *alert = window->findChild<QWidget *>(u"alert"_s);
                QTRY_VERIFY(alert->isVisible());
                shown = shownBuild(window);
                QCoreApplication::exit(0);
            },
            QUrl::fromLocalFile(u"/nonexistent.apk"_s));
        QCOMPARE(shown, QString());
        QVERIFY(life.inOrder());
    }

    void takesTheFileOfASecondStart()
    {
        const QTemporaryDir directory;
        const QUrl build = madeBuild(directory, u"second build.apk"_s);
        int status = -1;
        bool shown = false;
        bool inFront = false;
        const Life life([&](QWidget *window) {
            window->showMinimized();
            QProcess second;
            second.setWorkingDirectory(directory.path());
            second.start(QStringLiteral(VARDA_PROGRAM), {build.fileName()});
            QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, guard / 2);
            status = second.exitStatus() == QProcess::NormalExit ? second.exitCode() : -1;
            inFront = QTest::qWaitFor([window] { return !window->isMinimized() && window->isActiveWindow(); });
            shown = QTest::qWaitFor([window] { return shownBuild(window) == u"second build.apk"; });
            window->close();
        });
        QCOMPARE(status, 0);
        QVERIFY(shown);
        QVERIFY(inFront);
        QVERIFY(life.inOrder());
    }
};

QTEST_APPLESS_MAIN(ShellTest)
#include "ShellTest.moc"
