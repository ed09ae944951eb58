// The controls: when each is enabled, what each calls, and how the fields follow the model in both directions.
#include "Support/ViewFixture.h"
#include "Varda/View/Widgets/Theme.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAction>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// What the controls' states depend on.
struct Situation
{
    std::optional<AndroidDevice> selected = std::nullopt;
    bool busy = false;
    bool build = false;
    bool mirror = false;
    bool logs = false;
};

constexpr std::array controls{"refreshButton", "wirelessButton", "chooseButton", "installButton", "mirrorButton",
                              "recordButton",  "launchButton",   "stopButton",   "listButton",    "screenshotButton",
                              "logsButton",    "exportButton",   "pairButton",   "connectButton", "doneButton",
                              "packageField",  "menuButton"};

} // namespace

Q_DECLARE_METATYPE(Situation)

class ControlsTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void disablesWhatCannotWork_data()
    {
        QTest::addColumn<Situation>("situation");
        QTest::addColumn<QStringList>("disabled");
        const QStringList needReady{u"installButton"_s, u"mirrorButton"_s, u"recordButton"_s,    u"launchButton"_s,
                                    u"stopButton"_s,    u"listButton"_s,   u"screenshotButton"_s};
        const QStringList needIdle{u"refreshButton"_s, u"wirelessButton"_s, u"pairButton"_s, u"connectButton"_s};
        const QStringList nothingChosen{u"installButton"_s};
        const QStringList noLogs{u"exportButton"_s};
        const QStringList logs{u"logsButton"_s};
        const auto row = [](const char *name, const Situation &situation, const QStringList &disabled) {
            QTest::newRow(name) << situation << disabled;
        };
        row("no phone", {}, needReady + logs + noLogs);
        row("no phone, a build", {.build = true}, needReady + logs + noLogs);
        row("unauthorized", {.selected = shyPhone, .build = true}, needReady + logs + noLogs);
        row("offline", {.selected = wirelessPhone, .build = true, .logs = true}, needReady + logs);
        row("ready", {.selected = readyPhone}, nothingChosen + noLogs);
        row("ready, a build", {.selected = readyPhone, .build = true}, noLogs);
        row("an emulator, a build", {.selected = anEmulator, .build = true, .logs = true}, {});
        row("busy", {.selected = readyPhone, .busy = true, .build = true, .logs = true}, needReady + needIdle);
        row("busy, no phone", {.busy = true}, needReady + needIdle + logs + noLogs);
        row("mirror", {.selected = readyPhone, .build = true, .mirror = true, .logs = true}, {u"recordButton"_s});
        QStringList whileMirroring = needReady;
        whileMirroring.removeOne(u"mirrorButton"_s);
        row("mirror, busy", {.selected = readyPhone, .busy = true, .build = true, .mirror = true, .logs = true},
            whileMirroring + needIdle);
        row("mirror, phone gone", {.build = true, .mirror = true}, whileMirroring + logs + noLogs);
    }
    void disablesWhatCannotWork()
    {
        QFETCH(Situation, situation);
        QFETCH(QStringList, disabled);
        if (situation.selected)
            fixture->attach(*situation.selected);
        fixture->model->busy = situation.busy;
        if (situation.build)
            fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->mirrorRunning = situation.mirror;
        fixture->model->logs = situation.logs ? u"a line"_s : QString();
        fixture->settle();

        QStringList found;
        for (const char *name : controls) {
            if (!fixture->find(name)->isEnabled())
                found << QString::fromLatin1(name);
        }
        found.sort();
        disabled.sort();
        QCOMPARE(found, disabled);

        const auto action = [&](const char *name) {
            return fixture->view->findChild<QAction *>(QString::fromLatin1(name));
        };
        for (const QString &name : {u"refresh"_s, u"wireless"_s, u"export"_s, u"install"_s, u"record"_s, u"launch"_s,
                                    u"stop"_s, u"list"_s, u"screenshot"_s, u"logs"_s})
            QCOMPARE(fixture->view->findChild<QAction *>(name + u"Action")->isEnabled(),
                     fixture->view->findChild<QAbstractButton *>(name + u"Button")->isEnabled());
        QCOMPARE(action("livePhoneAction")->isEnabled(), fixture->find("mirrorButton")->isEnabled());
        QVERIFY(action("chooseAction")->isEnabled());
    }

    void bindsFieldsBothWays_data()
    {
        QTest::addColumn<int>("property");
        QTest::newRow("packageField") << 0;
        QTest::newRow("pairingEndpointField") << 1;
        QTest::newRow("pairingCodeField") << 2;
        QTest::newRow("connectEndpointField") << 3;
    }
    void bindsFieldsBothWays()
    {
        QFETCH(int, property);
        const std::array<Published<QString> *, 4> properties{
            &fixture->model->packageName, &fixture->model->pairingEndpoint, &fixture->model->pairingCode,
            &fixture->model->connectEndpoint};
        Published<QString> &value = *properties.at(static_cast<std::size_t>(property));
        auto *field = fixture->find<QLineEdit>(QTest::currentDataTag());

        QTest::keyClicks(field, u" 12 "_s);
        QCOMPARE(value(), u" 12 "_s); // untrimmed: trimming is the model's
        value = u"from the model"_s;
        QCOMPARE(field->text(), u" 12 "_s); // not before the next turn
        fixture->settle();
        QCOMPARE(field->text(), u"from the model"_s);

        field->setCursorPosition(4);
        value = u"from the model"_s;
        fixture->settle();
        QCOMPARE(field->cursorPosition(), 4);
        field->clear();
        QCOMPARE(value(), QString());
    }

    void codeInUseStaysGoneWhateverIsCommittedLate()
    {
        fixture->model->pairingEndpoint = u"192.168.1.50:37123"_s;
        auto *code = fixture->find<QLineEdit>("pairingCodeField");
        QTest::keyClicks(code, u"482913"_s);
        fixture->model->pair();
        QInputMethodEvent late;
        late.setCommitString(u"7"_s);
        QCoreApplication::sendEvent(code, &late);
        QCOMPARE(fixture->model->pairingCode(), QString());
        fixture->settle();
        QCOMPARE(fixture->model->pairingCode(), QString());
        QCOMPARE(code->text(), QString());

        QTest::keyClicks(code, u"551203"_s);
        QCOMPARE(fixture->model->pairingCode(), u"551203"_s);
    }

    void invertsLogging()
    {
        fixture->attach(readyPhone);
        auto *button = fixture->find<QAbstractButton>("logsButton");
        button->click();
        QVERIFY(fixture->model->logging());
        fixture->settle();
        button->click();
        QVERIFY(!fixture->model->logging());
    }

    void opensTheSheet()
    {
        fixture->find<QAbstractButton>("wirelessButton")->click();
        QVERIFY(fixture->model->wireless());
    }

    void asksForABuildAndForAnExport()
    {
        fixture->find<QAbstractButton>("chooseButton")->click();
        QCOMPARE(fixture->dialogs->questions, 1);
        fixture->model->logs = u"a line"_s;
        fixture->settle();
        fixture->find<QAbstractButton>("exportButton")->click();
        QCOMPARE(fixture->dialogs->questions, 2);
    }

    void refreshesOnTheNextTurn()
    {
        const QString before = fixture->model->status();
        fixture->find<QAbstractButton>("refreshButton")->click();
        QCOMPARE(fixture->model->status(), before);
        // This test has no tools beside it, which is what a refresh then reports.
        QTRY_COMPARE(fixture->model->status(), u"Android tools are missing from this build."_s);
    }

    void followsTheKeys()
    {
        fixture->model->logs = u"a line"_s;
        fixture->activate();

        QTest::keyClick(fixture->view.get(), Qt::Key_O, Qt::ControlModifier);
        QCOMPARE(fixture->dialogs->questions, 1);
        for (const auto key : {Qt::Key_S, Qt::Key_E})
            QTest::keyClick(fixture->view.get(), key, Qt::ControlModifier);
        QCOMPARE(fixture->dialogs->questions, 3);
        QTest::keyClick(fixture->view.get(), Qt::Key_F5);
        QTRY_COMPARE(fixture->model->status(), u"Android tools are missing from this build."_s);
        fixture->model->status = QString();
        QTest::keyClick(fixture->view.get(), Qt::Key_R, Qt::ControlModifier);
        QTRY_COMPARE(fixture->model->status(), u"Android tools are missing from this build."_s);

        fixture->model->busy = true;
        fixture->settle();
        QTest::keyClick(fixture->view.get(), Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(!fixture->model->wireless());
        fixture->model->busy = false;
        fixture->settle();
        QTest::keyClick(fixture->view.get(), Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(fixture->model->wireless());
    }

    void namesTheKeysInTooltips()
    {
        QVERIFY(fixture->find("chooseButton")->toolTip().contains(u"(Ctrl+O)"));
        QVERIFY(fixture->find("refreshButton")->toolTip().contains(u"(F5)"));
        QVERIFY(fixture->find("exportButton")->toolTip().contains(u"(Ctrl+S)"));
        QVERIFY(fixture->find("wirelessButton")->toolTip().contains(u"(Ctrl+Shift+W)"));
    }

    void listsTheKeysInTheMenu()
    {
        QStringList keys;
        for (const QAction *action : fixture->view->applicationMenu()->actions()) {
            if (!action->isSeparator())
                keys << action->text() + u": "_s + action->shortcut().toString();
        }
        QCOMPARE(keys, QStringList({u"Choose APK: Ctrl+O"_s, u"Install on device: Ctrl+I"_s,
                                    u"Open live phone: Ctrl+M"_s, u"Record test: Ctrl+Shift+M"_s,
                                    u"Screenshot: Ctrl+P"_s, u"Launch app: Ctrl+L"_s, u"Stop app: Ctrl+Shift+L"_s,
                                    u"List apps: Ctrl+Shift+A"_s, u"Start logs: Ctrl+T"_s, u"Export console: Ctrl+S"_s,
                                    u"Find in console: Ctrl+F"_s, u"Next match: F3"_s, u"Previous match: Shift+F3"_s,
                                    u"Refresh devices: F5"_s, u"Connect over Wi-Fi: Ctrl+Shift+W"_s}));
    }

    void pressesTheFocusedButtonOnReturn()
    {
        fixture->show();
        for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
            QTest::keyClick(fixture->find("chooseButton"), key);
        QCOMPARE(fixture->dialogs->questions, 3);
    }

    void givesTheFocusBack()
    {
        fixture->attach(readyPhone);
        fixture->show();
        QWidget *launch = fixture->find("launchButton");
        launch->setFocus();
        fixture->model->busy = true;
        fixture->settle();
        // On nothing that a key would press.
        QVERIFY(!qobject_cast<QAbstractButton *>(fixture->view->focusWidget()));
        fixture->model->busy = false;
        fixture->settle();
        QCOMPARE(fixture->view->focusWidget(), launch);

        fixture->model->busy = true;
        fixture->settle();
        QWidget *package = fixture->find("packageField");
        package->setFocus(); // the user went elsewhere
        fixture->model->busy = false;
        fixture->settle();
        QCOMPARE(fixture->view->focusWidget(), package);
    }

    void reachesEveryControlByTab()
    {
        fixture->list({readyPhone, shyPhone}, readyPhone.id);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->logs = u"a line"_s;
        fixture->activate();

        fixture->find("menuButton")->setFocus();
        QStringList order;
        for (int i = 0; i < 40; ++i) {
            const QString name = fixture->view->focusWidget()->objectName();
            if (i > 0 && name == u"menuButton")
                break;
            order << name;
            QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order, QStringList({u"menuButton"_s, u"refreshButton"_s, u"deviceRow"_s, u"wirelessButton"_s,
                                     u"chooseButton"_s, u"installButton"_s, u"mirrorButton"_s, u"recordButton"_s,
                                     u"packageField"_s, u"launchButton"_s, u"stopButton"_s, u"listButton"_s,
                                     u"screenshotButton"_s, u"logsButton"_s, u"exportButton"_s, u"consoleText"_s,
                                     u"statusText"_s}));
    }

    void showsWhatHasTheFocus()
    {
        fixture->view->resize(980, 700);
        fixture->attach(readyPhone);
        fixture->model->logs = u"a line"_s;
        fixture->activate();
        const QWidget *status = fixture->find("statusLine");
        fixture->find("menuButton")->setFocus();
        QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Tab);
        fixture->find("chooseButton")->setFocus();
        for (int i = 0; i < 12 && fixture->view->focusWidget()->objectName() != u"statusText"; ++i) {
            const QWidget *focused = fixture->view->focusWidget();
            const QRect place(focused->mapTo(fixture->view.get(), QPoint(0, 0)), focused->size());
            const QRect floating(status->mapTo(fixture->view.get(), QPoint(0, 0)), status->size());
            QVERIFY2(fixture->view->rect().contains(place), qPrintable(focused->objectName()));
            QVERIFY2(!floating.intersects(place), qPrintable(focused->objectName()));
            const QImage without = [&] {
                auto *widget = const_cast<QWidget *>(focused);
                widget->clearFocus();
                const QImage image = widget->grab().toImage();
                widget->setFocus();
                return image;
            }();
            QVERIFY2(const_cast<QWidget *>(focused)->grab().toImage() != without, qPrintable(focused->objectName()));
            QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(fixture->view->focusWidget()->objectName(), u"statusText"_s);
    }

    void ringsTheFocusAfterAKeyOnly_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : {"deviceRow", "chooseButton", "logsButton", "menuButton", "consoleText", "statusText"})
            QTest::newRow(name) << QByteArray(name);
    }
    void ringsTheFocusAfterAKeyOnly()
    {
        QFETCH(QByteArray, name);
        fixture->attach(readyPhone);
        fixture->activate();
        auto *widget = fixture->find(name.constData());
        const auto *area = qobject_cast<const QAbstractScrollArea *>(widget);
        const auto ringed = [widget] {
            return widget->grab().toImage().pixelColor(0, widget->height() / 2) == theme::accent;
        };
        QTest::mouseClick(area ? area->viewport() : widget, Qt::LeftButton, {}, QPoint(1, 1));
        fixture->settle();
        if (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
        QCOMPARE(fixture->view->focusWidget(), widget);
        QVERIFY(!ringed());
        QTest::keyClick(widget, Qt::Key_Shift); // any key that the widget itself has no use for
        QVERIFY(ringed());
        QTest::mouseClick(fixture->find("productLabel"), Qt::LeftButton); // which takes no focus away
        QCOMPARE(fixture->view->focusWidget(), widget);
        QVERIFY(!ringed());
    }

    void keepsItsPlaceBesideAChangingLabel()
    {
        fixture->attach(readyPhone);
        fixture->show();
        const QWidget *record = fixture->find("recordButton");
        const QRect place = record->geometry();
        fixture->model->mirrorRunning = true;
        fixture->settle();
        QCOMPARE(fixture->find<QAbstractButton>("mirrorButton")->text(), u"Stop live phone"_s);
        QCOMPARE(record->geometry(), place);
    }

    void showsWhatTabLeadsToFromTheSide()
    {
        fixture->activate();
        auto *page = fixture->find<QScrollArea>("mainColumn")->verticalScrollBar();
        page->setValue(page->maximum());
        QWidget *choose = fixture->find("chooseButton");
        QVERIFY(choose->mapTo(fixture->view.get(), QPoint(0, 0)).y() < 0);
        fixture->find("wirelessButton")->setFocus();
        QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Tab);
        QCOMPARE(fixture->view->focusWidget(), choose);
        QVERIFY(choose->mapTo(fixture->view.get(), QPoint(0, 0)).y() >= 0);
    }

    void leavesThePageUnderAPress_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("launchButton") << QSize(1180, 820);
        QTest::newRow("installButton") << QSize(980, 700);
    }
    void leavesThePageUnderAPress()
    {
        QFETCH(QSize, size);
        fixture->view->resize(size);
        fixture->attach(readyPhone);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->packageName = u"com.example.app"_s;
        fixture->model->logs = u"a line"_s;
        fixture->activate();
        const auto *page = fixture->find<QScrollArea>("mainColumn")->verticalScrollBar();
        QWidget *button = fixture->find(QTest::currentDataTag());
        QTest::mouseClick(button, Qt::LeftButton);
        fixture->settle(); // disabled, and enabled again: there is no adb beside this test
        QTRY_VERIFY(fixture->model->error() && !fixture->model->busy());
        QCOMPARE(page->value(), 0);
    }
};

QTEST_MAIN(ControlsTest)
#include "ControlsTest.moc"
