// GNOME's file dialog, as its user meets it: it knows nothing of the suffix that a name is given afterwards.
#include "Stage.h"
#include "Support/FileContents.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

const auto dialogTitle = u"Save Screenshot"_s;

} // namespace

class DesktopFileDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesAFileOnlyWhenTold()
    {
        Stage stage{{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = {}}};
        QVERIFY2(stage.errorString().isEmpty(), qUtf8Printable(stage.errorString()));
        VirtualPhone phone;
        QVERIFY2(phone.errorString().isEmpty(), qUtf8Printable(phone.errorString()));
        QFile earlier{stage.home(u"my shot.png"_s)};
        QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("an earlier picture") > 0);
        earlier.close();

        QProcessEnvironment desktop = stage.environment();
        desktop.insert(u"QT_QPA_PLATFORMTHEME"_s, u"gtk3"_s);
        desktop.insert(u"NO_AT_BRIDGE"_s,
                       u"1"_s); // the toolkit of that dialog would be a second program of Varda's process
        stage.varda().setProcessEnvironment(desktop);
        QVERIFY(stage.startVarda());
        VardaWindow window{stage.varda().processId()};
        QVERIFY(window.opens());
        QVERIFY(eventually([&] { return stage.adb({u"connect"_s, phone.endpoint()}).contains(u"connected to"_s); }));
        QVERIFY(window.shows(u"Ready for testing"_s));
        const auto dialog = [&] { return visibleWindows(stage.varda().processId(), dialogTitle).value(0); };

        QVERIFY(window.press(u"Screenshot"_s));
        QVERIFY(eventually([&] { return !dialog().isEmpty(); }));
        QVERIFY(!window.look(u"text"_s, u"File name:"_s)); // this is not Qt's own
        QVERIFY(activate(dialog()));
        pressKeys({u"ctrl+a"_s});
        typeText(u"my shot"_s);
        pressKeys({u"Return"_s});
        QVERIFY(window.shows(u"“my shot.png” already exists. Do you want to replace it?"_s));
        QVERIFY(window.press(u"Cancel"_s));

        // The dialog is back, with the name, and nothing was lost.
        QVERIFY(eventually([&] { return !dialog().isEmpty(); }));
        QVERIFY(activate(dialog()));
        pressKeys({u"Return"_s});
        QVERIFY(window.shows(u"“my shot.png” already exists. Do you want to replace it?"_s));
        QCOMPARE(contents(earlier.fileName()), "an earlier picture");
        QVERIFY(window.press(u"Replace"_s));
        QVERIFY(window.statusBecomes(u"Screenshot saved to my shot.png."_s));
        QVERIFY(contents(earlier.fileName()).startsWith("\x89PNG"));
    }
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::DesktopFileDialogTest)
#include "DesktopFileDialogTest.moc"
