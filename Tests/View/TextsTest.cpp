// Every text of the window, the sheet and the About pane, to the character, and the sizes that they are set in.
#include "Support/ViewFixture.h"
#include "Varda/View/AboutPane.h"
#include "Varda/View/Widgets/Labels.h"

#include <QAbstractButton>
#include <QDesktopServices>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// What a user reads on `widget`.
QString textOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (const auto *field = qobject_cast<const QLineEdit *>(widget))
        return field->placeholderText();
    if (const auto *console = qobject_cast<const QPlainTextEdit *>(widget))
        return console->toPlainText();
    if (const auto *block = qobject_cast<const QTextEdit *>(widget))
        return block->toPlainText();
    return u"<no text>"_s;
}

} // namespace

class TextsTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsItsTexts_data()
    {
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QString &text) { QTest::newRow(name) << text; };
        row("productLabel", u"Varda"_s);
        row("productTag", u"HALVEX / ANDROID WORKSPACE"_s);
        row("devicesHeading", u"DEVICES"_s);
        row("waitingText", u"Waiting for your phone"_s);
        row("wirelessButton", u"Connect over Wi-Fi"_s);
        row("trustTitle", u"Real hardware. Real results."_s);
        row("trustText",
            u"USB first. Authorize this Mac on your phone, then install and test your own development APKs."_s);
        row("badge", u"LOCAL BUILD / 0.1"_s);
        row("headline", u"Your Android. On your Mac."_s);
        row("tagline", u"Deploy. Control. Inspect. Repeat."_s);
        row("authorizationText",
            u"Unlock your Android phone and approve the “Allow USB debugging?” prompt for this Mac. "
            "Varda cannot approve it for you."_s);
        row("dropHeading", u"Drop your APK here"_s);
        row("dropText", u"Install an Android development build on the selected device. Updates keep the app’s existing "
                        "data."_s);
        row("chooseButton", u"Choose APK"_s);
        row("installButton", u"Install on device"_s);
        row("liveHeadline", u"Control the real screen."_s);
        row("liveText",
            u"Opens a real scrcpy window. Use your Mac’s mouse and keyboard, or save a recording of your test "
            "session."_s);
        row("mirrorButton", u"Open live phone"_s);
        row("recordButton", u"Record test"_s);
        row("packageField", u"Package ID · com.example.myapp"_s);
        row("launchButton", u"Launch"_s);
        row("stopButton", u"Stop app"_s);
        row("listButton", u"List apps"_s);
        row("screenshotButton", u"Screenshot"_s);
        row("consoleHeading", u"DEVICE CONSOLE"_s);
        row("logsButton", u"Start logs"_s);
        row("exportButton", u"Export"_s);
        row("consoleText", u"Device output will appear here. Enter a package ID to limit logs to your running app."_s);
        row("consoleFooter", u"Latest 350 lines · refreshes every 2.5s"_s);
        row("statusText", u"Connect an Android phone with a USB data cable."_s);
        row("setupNote",
            u"USB setup: Android Settings → About phone → tap Build number 7 times → Developer options → USB "
            "debugging. Use a data cable, unlock the phone and allow this computer. An emulator is shown "
            "separately and is never presented as a real phone test."_s);
        row("sheetTitle", u"Go wireless."_s);
        row("doneButton", u"Done"_s);
        row("sheetText",
            u"Android 11+ · same Wi-Fi network. On the phone, open Developer options → Wireless debugging. "
            "Pairing and connection use different ports."_s);
        row("pairHeading", u"1. Pair with pairing code"_s);
        row("pairingEndpointField", u"Pairing address · 192.168.1.50:37123"_s);
        row("pairingCodeField", u"Six-digit pairing code"_s);
        row("pairButton", u"Pair this Mac"_s);
        row("connectHeading", u"2. Connect using the main screen’s address"_s);
        row("connectEndpointField", u"Connection address · 192.168.1.50:42137"_s);
        row("connectButton", u"Connect phone"_s);
        row("sheetStatusText", u"Connect an Android phone with a USB data cable."_s);
        row("alertTitle", u"Varda"_s);
        row("alertButton", u"OK"_s);
    }
    void showsItsTexts()
    {
        QFETCH(QString, text);
        QCOMPARE(textOf(fixture->find(QTest::currentDataTag())), text);
    }

    void numbersThePanels()
    {
        QStringList titles;
        for (const auto *label : fixture->view->findChildren<QLabel *>(u"panelTitle"_s))
            titles << label->text();
        QCOMPARE(titles,
                 QStringList({u"01 / DEPLOY A BUILD"_s, u"02 / LIVE PHONE"_s, u"03 / TEST YOUR APPLICATION"_s}));
    }

    void changesWithTheState()
    {
        fixture->show();
        QVERIFY(!fixture->find("deviceCard")->isVisible());
        QVERIFY(!fixture->find("authorizationWarning")->isVisible());
        QVERIFY(fixture->find("waitingText")->isVisible());

        fixture->attach(readyPhone);
        QVERIFY(fixture->find("deviceCard")->isVisible());
        QVERIFY(!fixture->find("authorizationWarning")->isVisible());
        QVERIFY(!fixture->find("waitingText")->isVisible());
        QCOMPARE(textOf(fixture->find("deviceName")), readyPhone.name);
        QCOMPARE(textOf(fixture->find("deviceTransport")), u"USB"_s);
        QCOMPARE(textOf(fixture->find("deviceState")), u"Ready for testing"_s);

        fixture->attach(shyPhone);
        QVERIFY(fixture->find("authorizationWarning")->isVisible());
        QCOMPARE(textOf(fixture->find("deviceState")), u"unauthorized"_s);

        fixture->attach(wirelessPhone);
        QVERIFY(!fixture->find("authorizationWarning")->isVisible());
        QCOMPARE(textOf(fixture->find("deviceTransport")), u"Wi-Fi"_s);
        QCOMPARE(textOf(fixture->find("deviceState")), u"offline"_s);

        fixture->model->devices = QList<AndroidDevice>{readyPhone}; // the selected one is gone
        fixture->model->mirrorRunning = true;
        fixture->model->logging = true;
        fixture->model->logs = u"one\ntwo"_s;
        fixture->model->busy = true;
        fixture->model->status = u"Installing demo.apk…"_s;
        fixture->settle();
        QVERIFY(!fixture->find("deviceCard")->isVisible());
        QCOMPARE(textOf(fixture->find("mirrorButton")), u"Stop live phone"_s);
        QCOMPARE(textOf(fixture->find("logsButton")), u"Pause logs"_s);
        QCOMPARE(textOf(fixture->find("consoleText")), u"one\ntwo"_s);
        QVERIFY(fixture->find("busyIndicator")->isVisible());
        QCOMPARE(textOf(fixture->find("statusText")), u"Installing demo.apk…"_s);
        QCOMPARE(textOf(fixture->find("sheetStatusText")), u"Installing demo.apk…"_s);
    }

    void setsSizes_data()
    {
        QTest::addColumn<int>("pixels");
        QTest::addColumn<bool>("bold");
        QTest::newRow("productLabel") << 17 << true;
        QTest::newRow("productTag") << 9 << false;
        QTest::newRow("devicesHeading") << 10 << true;
        QTest::newRow("trustText") << 10 << false;
        QTest::newRow("badge") << 10 << false;
        QTest::newRow("headline") << 32 << true;
        QTest::newRow("deviceName") << 13 << true;
        QTest::newRow("panelTitle") << 10 << false;
        QTest::newRow("consoleText") << 11 << false;
        QTest::newRow("statusText") << 10 << false;
        QTest::newRow("setupNote") << 10 << false;
        QTest::newRow("sheetTitle") << 26 << true;
        QTest::newRow("pairHeading") << 13 << true;
        QTest::newRow("connectHeading") << 13 << true;
        QTest::newRow("sheetStatusText") << 10 << false;
    }
    void setsSizes()
    {
        QFETCH(int, pixels);
        QFETCH(bool, bold);
        const QFont font = fixture->find(QTest::currentDataTag())->font();
        QCOMPARE(font.pixelSize(), pixels);
        QCOMPARE(font.weight() >= QFont::Bold, bold);
    }

    void setsItsFirstPictureInTwelveFaces()
    {
        fixture->show();
        QSet<QString> faces;
        for (const QWidget *widget : fixture->view->findChildren<QWidget *>()) {
            const QFont font = widget->font();
            if (widget->isVisible() && !textOf(widget).isEmpty())
                faces << u"%1 %2 %3 %4"_s.arg(font.family())
                             .arg(font.pixelSize())
                             .arg(font.weight())
                             .arg(font.styleStrategy());
        }
        QVERIFY2(faces.size() <= 12, qPrintable(faces.values().join(u", "_s)));
    }

    void saysWhatItIs()
    {
        AboutPane pane;
        pane.ensureBuilt();
        const auto text = [&](const char *name) {
            return textOf(pane.findChild<QWidget *>(QString::fromLatin1(name)));
        };
        QCOMPARE(text("aboutTitle"), u"Varda by Halvex"_s);
        QCOMPARE(text("aboutBuild"), u"Local development build · Apple Silicon · macOS 13+"_s);
        QCOMPARE(
            text("aboutText"),
            u"ADB and scrcpy run locally. No account, cloud relay or analytics. Phone access requires your Android USB "
            "debugging authorization. Wi-Fi uses Android’s pairing-code workflow."_s);
        QCOMPARE(text("aboutLink"), u"Android debugging documentation"_s);
        QCOMPARE(pane.width(), 520);
        const QFont title = pane.findChild<QLabel *>(u"aboutTitle"_s)->font();
        QCOMPARE(title.pixelSize(), 17);
        QVERIFY(title.weight() >= QFont::Bold);
    }

    void opensTheDocumentation()
    {
        AboutPane pane;
        pane.ensureBuilt();
        QDesktopServices::setUrlHandler(u"https"_s, this, "openPage");
        pane.findChild<QAbstractButton *>(u"aboutLink"_s)->click();
        QDesktopServices::unsetUrlHandler(u"https"_s);
        QCOMPARE(m_opened, QUrl(u"https://developer.android.com/tools/adb"_s));
    }

public Q_SLOTS:
    void openPage(const QUrl &page) { m_opened = page; }

private:
    QUrl m_opened;
};

QTEST_MAIN(TextsTest)
#include "TextsTest.moc"
