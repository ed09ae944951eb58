// What a screen reader is told: names, roles and states of everything in the window, and which changes are announced.
#include "Support/ViewFixture.h"
#include "Varda/View/AboutPane.h"

#include <QAbstractScrollArea>
#include <QAccessible>

#include <climits>
#include <functional>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

using Visitor = std::function<void(QAccessibleInterface &)>;

/// Calls `visit` for `root` and everything below it that is shown.
void walk(QAccessibleInterface *root, const Visitor &visit)
{
    if (!root || !root->isValid() || root->state().invisible)
        return;
    visit(*root);
    for (int i = 0; i < root->childCount(); ++i)
        walk(root->child(i), visit);
}

QList<QAccessibleInterface *> nodes(QWidget *window, QAccessible::Role role)
{
    QList<QAccessibleInterface *> found;
    walk(QAccessible::queryAccessibleInterface(window), [&](QAccessibleInterface &node) {
        if (node.role() == role)
            found << &node;
    });
    return found;
}

QStringList names(const QList<QAccessibleInterface *> &nodes)
{
    QStringList names;
    for (QAccessibleInterface *node : nodes)
        names << node->text(QAccessible::Name);
    return names;
}

/// The events that reached the platform since the last look: name of the object and kind of the event.
QList<std::pair<QString, QAccessible::Event>> announced;

void record(QAccessibleEvent *event)
{
    if (event->object())
        announced.append({event->object()->objectName(), event->type()});
}

} // namespace

class AccessibilityTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QAccessible::setActive(true); }

    void namesButtonsByTheirTexts()
    {
        fixture->show();
        const QStringList found = names(nodes(fixture->view.get(), QAccessible::Button));
        for (const auto &name : {u"Main menu"_s, u"Refresh devices"_s, u"Connect over Wi-Fi"_s, u"Choose APK"_s,
                                 u"Install on device"_s, u"Open live phone"_s, u"Record test"_s, u"Launch"_s,
                                 u"Stop app"_s, u"List apps"_s, u"Screenshot"_s, u"Start logs"_s, u"Export"_s})
            QVERIFY2(found.count(name) == 1, qPrintable(name));
        QCOMPARE(found.size(), 13);
    }

    void namesFields()
    {
        fixture->show();
        fixture->model->wireless = true;
        fixture->model->logs = u"a line of the log"_s;
        fixture->settle();
        QCOMPARE(names(nodes(fixture->view.get(), QAccessible::EditableText)),
                 QStringList({u"Package ID"_s, u"Device console"_s}));
        QWidget *sheet = fixture->find("wirelessSheet");
        QCOMPARE(names(nodes(sheet, QAccessible::EditableText)),
                 QStringList({u"Pairing address"_s, u"Pairing code"_s, u"Connection address"_s}));

        QAccessibleInterface *console = QAccessible::queryAccessibleInterface(fixture->find("consoleText"));
        QVERIFY(console->state().readOnly);
        QVERIFY(console->textInterface());
        QCOMPARE(console->textInterface()->text(0, 17), u"a line of the log"_s);
    }

    void tellsAllAboutADevice()
    {
        fixture->list({readyPhone, shyPhone, anEmulator}, shyPhone.id);
        fixture->show();
        const auto rows = nodes(fixture->view.get(), QAccessible::RadioButton);
        QCOMPARE(names(rows),
                 QStringList({u"Pixel 8, USB, R58M42ABCDE, device"_s, u"moto g54 5G, USB, ZY22FQ7TKD, unauthorized"_s,
                              u"sdk gphone64 x86 64, Emulator, emulator-5554, device"_s}));
        QVERIFY(!rows.at(0)->state().checked);
        QVERIFY(rows.at(1)->state().checked);
        QVERIFY(rows.at(1)->state().checkable);
        QVERIFY(rows.at(1)->state().focusable);
    }

    void selectsADeviceByItsAction()
    {
        fixture->model->devices = QList<AndroidDevice>{readyPhone, shyPhone};
        fixture->show();
        announced.clear();
        const auto previous = QAccessible::installUpdateHandler(record);
        auto *action = nodes(fixture->view.get(), QAccessible::RadioButton).at(0)->actionInterface();
        QVERIFY(action);
        QCOMPARE(action->actionNames(), QStringList{QAccessibleActionInterface::pressAction()});
        action->doAction(QAccessibleActionInterface::pressAction());
        fixture->settle();
        QAccessible::installUpdateHandler(previous);
        QCOMPARE(fixture->model->selectedID(), readyPhone.id);
        QVERIFY(announced.contains({u"deviceRow"_s, QAccessible::StateChanged}));
    }

    void namesEverythingThatTakesTheFocus()
    {
        fixture->attach(shyPhone);
        fixture->model->wireless = true;
        fixture->show();
        fixture->settle();
        QStringList nameless;
        for (QWidget *window : {static_cast<QWidget *>(fixture->view.get()), fixture->find("wirelessSheet")}) {
            walk(QAccessible::queryAccessibleInterface(window), [&](QAccessibleInterface &node) {
                if (node.state().focusable && node.text(QAccessible::Name).isEmpty())
                    nameless << node.object()->objectName();
            });
        }
        QCOMPARE(nameless.join(u", "_s), QString());
    }

    void readsTheTexts()
    {
        fixture->attach(shyPhone);
        fixture->show();
        const QStringList found = names(nodes(fixture->view.get(), QAccessible::StaticText));
        for (const auto &text : {u"Varda"_s, u"DEVICES"_s, u"moto g54 5G"_s, u"USB"_s, u"unauthorized"_s,
                                 u"01 / DEPLOY A BUILD"_s, u"02 / LIVE PHONE"_s, u"03 / TEST YOUR APPLICATION"_s,
                                 u"DEVICE CONSOLE"_s, u"Latest 350 lines · refreshes every 2.5s"_s})
            QVERIFY2(found.contains(text), qPrintable(text));
        QCOMPARE(names(nodes(fixture->view.get(), QAccessible::StatusBar)), QStringList{fixture->model->status()});
    }

    void announcesTheStatus()
    {
        fixture->show();
        announced.clear();
        const auto previous = QAccessible::installUpdateHandler(record);
        fixture->model->status = u"Installed demo.apk"_s;
        fixture->settle();
        const auto first = announced;
        announced.clear();
        fixture->model->status = u"Installed demo.apk"_s; // a tick that changes nothing is not read out again
        fixture->settle();
        QAccessible::installUpdateHandler(previous);
        QVERIFY(first.contains({u"statusText"_s, QAccessible::NameChanged}));
        QVERIFY(first.contains({u"statusText"_s, QAccessible::Alert}));
        QVERIFY(announced.isEmpty());
        QCOMPARE(QAccessible::queryAccessibleInterface(fixture->find("statusText"))->text(QAccessible::Name),
                 u"Installed demo.apk"_s);
    }

    void presentsTheAlert()
    {
        fixture->show();
        fixture->model->error = u"adb: device offline"_s;
        QWidget *alert = fixture->find("alert");
        QTRY_VERIFY(alert->isVisible());
        QAccessibleInterface *node = QAccessible::queryAccessibleInterface(alert);
        QCOMPARE(node->role(), QAccessible::AlertMessage);
        QCOMPARE(node->text(QAccessible::Name), u"Varda"_s);
        QVERIFY(names(nodes(alert, QAccessible::StaticText)).contains(u"adb: device offline"_s));
        QCOMPARE(names(nodes(alert, QAccessible::Button)), QStringList{u"OK"_s});
    }

    void hidesDecorations()
    {
        fixture->attach(readyPhone);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->show();
        QVERIFY(nodes(fixture->view.get(), QAccessible::Graphic).isEmpty());
    }

    void presentsTheLink()
    {
        AboutPane pane;
        pane.present();
        QCOMPARE(names(nodes(&pane, QAccessible::Link)), QStringList{u"Android debugging documentation"_s});
    }

    /// A reader counts the children and then asks for one after the other; a scroll bar may have gone in between.
    void knowsNoChildBeyondTheLast()
    {
        fixture->attach(shyPhone);
        fixture->model->wireless = true;
        fixture->show();
        fixture->settle();
        QStringList scrollAreas;
        for (QWidget *window : {static_cast<QWidget *>(fixture->view.get()), fixture->find("wirelessSheet")}) {
            walk(QAccessible::queryAccessibleInterface(window), [&](QAccessibleInterface &node) {
                if (qobject_cast<QAbstractScrollArea *>(node.object()))
                    scrollAreas << node.object()->objectName();
                for (const int beyond : {node.childCount(), INT_MAX})
                    QVERIFY2(!node.child(beyond), qPrintable(node.text(QAccessible::Name)));
            });
        }
        QVERIFY2(scrollAreas.contains(u"deviceList"_s), qPrintable(scrollAreas.join(u", "_s)));
    }
};

QTEST_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
