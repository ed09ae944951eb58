// The alert and the sheet: bound to the model in both directions, and always on top of what lies below.
#include "Support/ViewFixture.h"
#include "Varda/View/ErrorAlert.h"
#include "Varda/View/QtFileDialogs.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/WirelessSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

QDialog *alertOf(const ViewFixture &fixture)
{
    return fixture.find<ErrorAlert>("alert");
}

QDialog *sheetOf(const ViewFixture &fixture)
{
    return fixture.find<WirelessSheet>("wirelessSheet");
}

QString alertText(const ViewFixture &fixture)
{
    return fixture.find<TextBlock>("alertText")->toPlainText();
}

/// Whether `dialog` comes up on the screen.
bool comesUp(QDialog *dialog)
{
    return QTest::qWaitFor([dialog] { return dialog->isVisible(); }) && QTest::qWaitForWindowExposed(dialog);
}

/// Remembers whether a dialog was resized while it was on the screen.
class SizeWatch final : public QObject
{
public:
    explicit SizeWatch(QDialog *dialog) { dialog->installEventFilter(this); }

    bool resizedWhileShown = false;

protected:
    bool eventFilter(QObject *dialog, QEvent *event) override
    {
        if (event->type() == QEvent::Resize && static_cast<QDialog *>(dialog)->isVisible())
            resizedWhileShown = true;
        return false;
    }
};

/// The dialog in front, which has to be of the kind that is expected.
template <typename Dialog>
Dialog *modal()
{
    auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
    if (!dialog)
        qFatal("another dialog was expected");
    return dialog;
}

void press(const QDialog *dialog, const QString &text)
{
    for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>()) {
        if (button->text().remove(u'&') == text)
            button->click();
    }
}

/// Writes a file into the home folder, where the file dialogs of a desktop without standard folders begin.
bool writeFile(const QString &name)
{
    QFile file(QDir::home().filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(QByteArray(70'000, 'x')) > 0;
}

/// Closes a window as the window manager does.
void closeFromOutside(QWidget *window)
{
    window->windowHandle()->close();
}

/// Whether a user can press `widget`: visible, enabled, and not behind a modal window.
bool reachable(QWidget *widget)
{
    if (!widget->isVisible() || !widget->isEnabled())
        return false;
    bool clicked = false;
    const auto connection = QObject::connect(qobject_cast<QAbstractButton *>(widget), &QAbstractButton::pressed, widget,
                                             [&clicked] { clicked = true; });
    QWindow *window = widget->window()->windowHandle();
    const QPoint place = widget->mapTo(widget->window(), widget->rect().center());
    QTest::mousePress(window, Qt::LeftButton, {}, place);
    QTest::mouseMove(window, QPoint(1, 1)); // away, so that the release presses nothing
    QTest::mouseRelease(window, Qt::LeftButton, {}, QPoint(1, 1));
    QObject::disconnect(connection);
    return clicked;
}

} // namespace

class DialogsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheErrorUntilItIsDismissed_data();
    void showsTheErrorUntilItIsDismissed();
    void treatsAnEmptyTextAsAnError();
    void measuresNoDialogBeforeItIsShown();
    void opensOverTheMiddleOfTheWindow_data();
    void opensOverTheMiddleOfTheWindow();
    void takesNoRoomForSpaceAtTheEnd_data();
    void takesNoRoomForSpaceAtTheEnd();
    void showsTheLatestError();
    void goesWhenTheErrorIsCleared();
    void showsAnErrorOnTopOfTheSheet();
    void takesTheKeyboardFromASheetThatHasJustOpened();
    void comesBackOnTopWhenTheSheetOpens();
    void comesBackOnTheWindowWhenTheSheetCloses();
    void showsAnErrorOnTopOfAFileDialog();
    void opensNoFileDialogOnTheAlert();
    void replacesAFileOnlyWhenTold();
    void cutsOffNoColumnOfTheFileDialog();
    void scrollsALongError();
    void keepsTheSelectionInTheError();
    void opensAndClosesWithTheModel();
    void writesFalseWhenTheSheetIsDismissed_data();
    void writesFalseWhenTheSheetIsDismissed();
    void keepsWhatWasTyped();
    void hasTheSheetsMeasures();
    void pressesNothingOnReturn();
    void neverGivesTheCodeAway();
};

void DialogsTest::showsTheErrorUntilItIsDismissed_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("OK") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("window manager") << 2;
    QTest::newRow("Return") << 3;
}

void DialogsTest::showsTheErrorUntilItIsDismissed()
{
    QFETCH(int, way);
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"adb: device offline"_s;
    QVERIFY(!alertOf(fixture)->isVisible());
    QDialog *alert = alertOf(fixture);
    QVERIFY(comesUp(alert));
    QCOMPARE(alert->windowTitle(), u"Varda"_s);
    QCOMPARE(alertText(fixture), u"adb: device offline"_s);
    QVERIFY(alert->isModal());
    QVERIFY(!reachable(fixture.find("chooseButton")));
    if (way == 0)
        QTest::mouseClick(fixture.find("alertButton"), Qt::LeftButton);
    else if (way == 1)
        QTest::keyClick(alert, Qt::Key_Escape);
    else if (way == 2)
        closeFromOutside(alert);
    else
        QTest::keyClick(alert, Qt::Key_Return);
    QTRY_VERIFY(!fixture.model->error());
    QTRY_VERIFY(!alert->isVisible());
    fixture.settle();
    QVERIFY(!alert->isVisible());
}

void DialogsTest::treatsAnEmptyTextAsAnError()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = QString();
    QVERIFY(comesUp(alertOf(fixture)));
    const QWidget *hint = fixture.find("alertHint")->parentWidget();
    const QWidget *title = fixture.find("alertTitle");
    QVERIFY(title->geometry().bottom() < hint->y());
    QVERIFY(hint->y() - title->geometry().bottom() < fixture.find("alertButton")->height()); // no empty line between
    fixture.find<QAbstractButton>("alertButton")->click();
    QVERIFY(!fixture.model->error());
}

void DialogsTest::measuresNoDialogBeforeItIsShown()
{
    ViewFixture fixture;
    fixture.show();
    const auto *sheet = fixture.find("wirelessSheet");
    QCOMPARE(sheet->maximumHeight(), QWIDGETSIZE_MAX);
    fixture.model->wireless = true;
    QTRY_VERIFY(sheet->isVisible());
    QVERIFY(sheet->maximumHeight() < QWIDGETSIZE_MAX);
}

void DialogsTest::opensOverTheMiddleOfTheWindow_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("one line") << u"adb: device offline"_s;
    QTest::newRow("wrapped lines") << u"a path/without/end/"_s.repeated(20);
    QTest::newRow("more lines than there is room for") << u"one more line of a long complaint\n"_s.repeated(90);
}

void DialogsTest::opensOverTheMiddleOfTheWindow()
{
    QFETCH(QString, text);
    ViewFixture fixture;
    fixture.show();
    QTRY_VERIFY(fixture.view->frameGeometry() != fixture.view->geometry());
    const auto offCentre = [&](const QDialog *dialog) {
        return (dialog->geometry().center() - fixture.view->geometry().center()).manhattanLength();
    };
    for (const QString &shown : {u"an earlier text"_s, text}) {
        fixture.model->status = shown;
        const SizeWatch sheetSize(sheetOf(fixture));
        fixture.model->wireless = true;
        QVERIFY(comesUp(sheetOf(fixture)));
        fixture.model->error = shown;
        const SizeWatch alertSize(alertOf(fixture));
        QVERIFY(comesUp(alertOf(fixture)));
        QTRY_VERIFY2(offCentre(sheetOf(fixture)) <= 2, qPrintable(QString::number(offCentre(sheetOf(fixture)))));
        QTRY_VERIFY2(offCentre(alertOf(fixture)) <= 2, qPrintable(QString::number(offCentre(alertOf(fixture)))));
        QVERIFY(!sheetSize.resizedWhileShown);
        QVERIFY(!alertSize.resizedWhileShown);
        fixture.model->error = std::nullopt;
        fixture.model->wireless = false;
        QTRY_VERIFY(!sheetOf(fixture)->isVisible());
    }
}

void DialogsTest::takesNoRoomForSpaceAtTheEnd_data()
{
    QTest::addColumn<QString>("space");
    QTest::newRow("line feed") << u"\n"_s;
    QTest::newRow("line feeds of another system") << u"\r\n\r\n"_s;
    QTest::newRow("blanks on lines of their own") << u" \n\t\n  "_s;
}

void DialogsTest::takesNoRoomForSpaceAtTheEnd()
{
    QFETCH(QString, space);
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"  adb:\n\noffline"_s;
    QVERIFY(comesUp(alertOf(fixture)));
    const int height = alertOf(fixture)->height();
    const QString text = u"  adb:\n\noffline"_s + space;
    fixture.model->error = text;
    fixture.settle();
    QCOMPARE(alertOf(fixture)->height(), height);
    QCOMPARE(alertText(fixture), u"  adb:\n\noffline"_s);
    QCOMPARE(fixture.model->error(), text);
}

void DialogsTest::showsTheLatestError()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"first"_s;
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    fixture.model->error = u"second"_s;
    QTRY_COMPARE(alertText(fixture), u"second"_s);
    fixture.find<QAbstractButton>("alertButton")->click();
    fixture.settle();
    QVERIFY(!alertOf(fixture)->isVisible());
    fixture.model->error = u"second"_s; // the same failure again is another failure
    QTRY_VERIFY(alertOf(fixture)->isVisible());
}

void DialogsTest::goesWhenTheErrorIsCleared()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"gone before it is read"_s;
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    fixture.model->error = std::nullopt;
    QTRY_VERIFY(!alertOf(fixture)->isVisible());
}

void DialogsTest::showsAnErrorOnTopOfTheSheet()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QVERIFY(comesUp(sheetOf(fixture)));
    fixture.model->error = u"no route to host"_s;
    QVERIFY(comesUp(alertOf(fixture)));
    QCOMPARE(alertOf(fixture)->windowHandle()->transientParent(), sheetOf(fixture)->windowHandle());
    QVERIFY(!reachable(fixture.find("doneButton")));
    QVERIFY(reachable(fixture.find("alertButton")));
    fixture.find<QAbstractButton>("alertButton")->click();
    fixture.settle();
    QVERIFY(sheetOf(fixture)->isVisible());
    QVERIFY(fixture.model->wireless());
    QVERIFY(reachable(fixture.find("doneButton")));
}

void DialogsTest::takesTheKeyboardFromASheetThatHasJustOpened()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    fixture.model->error = u"a failure"_s; // before the window manager has given the sheet the keyboard
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    QVERIFY(comesUp(sheetOf(fixture)));
    QTRY_COMPARE(QApplication::activeWindow(), alertOf(fixture));
}

void DialogsTest::comesBackOnTopWhenTheSheetOpens()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"an earlier failure"_s;
    QVERIFY(comesUp(alertOf(fixture)));
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    QCOMPARE(alertOf(fixture)->windowHandle()->transientParent(), sheetOf(fixture)->windowHandle());
    QCOMPARE(fixture.model->error(), u"an earlier failure"_s);
    QVERIFY(comesUp(alertOf(fixture)));
    QVERIFY(reachable(fixture.find("alertButton")));
}

void DialogsTest::comesBackOnTheWindowWhenTheSheetCloses()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QVERIFY(comesUp(sheetOf(fixture)));
    fixture.model->error = u"a failure"_s;
    QVERIFY(comesUp(alertOf(fixture)));
    fixture.model->wireless = false;
    QTRY_VERIFY(!sheetOf(fixture)->isVisible());
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    QCOMPARE(alertOf(fixture)->windowHandle()->transientParent(), fixture.view->windowHandle());
    QCOMPARE(fixture.model->error(), u"a failure"_s);
    QVERIFY(comesUp(alertOf(fixture)));
    QVERIFY(reachable(fixture.find("alertButton")));
}

void DialogsTest::showsAnErrorOnTopOfAFileDialog()
{
    ViewFixture fixture;
    fixture.show();
    QFileDialog dialog(fixture.view.get());
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    bool onTop = false;
    bool stillOpen = false;
    QTimer::singleShot(0, this, [&] {
        fixture.model->error = u"the mirror ended"_s;
        if (comesUp(alertOf(fixture)))
            onTop = reachable(fixture.find("alertButton"));
        fixture.find<QAbstractButton>("alertButton")->click();
        fixture.settle();
        stillOpen = dialog.isVisible();
        dialog.reject();
    });
    dialog.exec(); // as the model's questions about files do
    QVERIFY(onTop);
    QVERIFY(stillOpen);
    QVERIFY(!fixture.model->error());
    QVERIFY(!alertOf(fixture)->isVisible());
}

void DialogsTest::opensNoFileDialogOnTheAlert()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"the mirror ended"_s;
    QVERIFY(comesUp(alertOf(fixture)));
    QVERIFY(QTest::qWaitForWindowActive(alertOf(fixture)));
    QWidget *host = nullptr;
    bool onTop = false;
    // The alert goes, and is back with the next error while the question is open.
    QTimer::singleShot(0, this, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        host = dialog->parentWidget();
        fixture.model->error = std::nullopt;
        fixture.settle();
        fixture.model->error = u"it ended again"_s;
        if (comesUp(alertOf(fixture)))
            onTop = reachable(fixture.find("alertButton"));
        dialog->reject();
    });
    QtFileDialogs dialogs;
    QVERIFY(!dialogs.chooseBuild());
    QCOMPARE(host, fixture.view.get());
    QVERIFY(onTop);
}

void DialogsTest::replacesAFileOnlyWhenTold()
{
    ViewFixture fixture;
    fixture.show();
    QVERIFY(writeFile(u"my shot.png"_s));
    QStringList asked;
    QString offered;
    // "my shot" is typed and not replaced; then what is offered again is taken, and replaced.
    const auto save = [] { press(modal<QFileDialog>(), u"Save"_s); };
    QTimer::singleShot(0, this, [&] {
        modal<QFileDialog>()->findChild<QLineEdit *>()->setText(u"my shot"_s);
        QTimer::singleShot(0, this, [&] {
            asked << modal<QMessageBox>()->text();
            QTimer::singleShot(0, this, [&] {
                offered = modal<QFileDialog>()->findChild<QLineEdit *>()->text();
                QTimer::singleShot(0, this, [&] {
                    asked << modal<QMessageBox>()->text();
                    press(modal<QMessageBox>(), u"Replace"_s);
                });
                save();
            });
            press(modal<QMessageBox>(), u"Cancel"_s);
        });
        save();
    });
    QtFileDialogs dialogs;
    QCOMPARE(dialogs.saveLocation(SaveKind::PngImage, u"Varda-1.png"_s), QDir::home().filePath(u"my shot.png"_s));
    QCOMPARE(asked, QStringList(2, u"“my shot.png” already exists. Do you want to replace it?"_s));
    QCOMPARE(offered, u"my shot.png"_s);
}

void DialogsTest::cutsOffNoColumnOfTheFileDialog()
{
    ViewFixture fixture;
    fixture.show();
    QVERIFY(writeFile(u"a build with a rather long name.apk"_s));
    bool fits = true;
    QTimer::singleShot(0, this, [&] {
        auto *details = modal<QFileDialog>()->findChild<QTreeView *>();
        QVERIFY(details);
        QVERIFY(QTest::qWaitFor([&] { return details->model()->rowCount(details->rootIndex()) > 0; }));
        fixture.settle();
        for (int column = 1; column < details->header()->count(); ++column) {
            const QString text = details->model()->index(0, column, details->rootIndex()).data().toString();
            const int needed = details->fontMetrics().horizontalAdvance(text) + 6;
            fits = fits && (details->isColumnHidden(column) || details->columnWidth(column) >= needed);
        }
        modal<QFileDialog>()->reject();
    });
    QtFileDialogs dialogs;
    QVERIFY(!dialogs.chooseBuild());
    QVERIFY(fits);
}

void DialogsTest::scrollsALongError()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = QString(3000, u'x');
    QVERIFY(comesUp(alertOf(fixture)));
    fixture.settle();
    QVERIFY(alertOf(fixture)->height() < fixture.view->minimumHeight());
    QVERIFY(alertOf(fixture)->width() < fixture.view->minimumWidth());
    QVERIFY(reachable(fixture.find("alertButton")));

    fixture.model->error = u"one more line of a long complaint\n"_s.repeated(90);
    fixture.settle();
    auto *text = fixture.find<TextBlock>("alertText");
    QVERIFY(text->verticalScrollBar()->maximum() > 0);
    QVERIFY(text->verticalScrollBar()->isVisible());
    // The last line that is seen is seen whole: where the text is cut off, the next one begins.
    const int foot = text->viewport()->height();
    const QRect below = text->cursorRect(text->cursorForPosition(QPoint(0, foot + 2)));
    QVERIFY2(qAbs(below.top() - foot) <= 1, qPrintable(u"%1 of %2"_s.arg(below.top()).arg(foot)));
    QVERIFY(alertOf(fixture)->height() < fixture.view->minimumHeight());

    fixture.model->error = u"short"_s;
    fixture.settle();
    QVERIFY(alertOf(fixture)->height() < 220);
}

void DialogsTest::keepsTheSelectionInTheError()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->error = u"select me"_s;
    QTRY_VERIFY(alertOf(fixture)->isVisible());
    auto *text = fixture.find<TextBlock>("alertText");
    text->selectAll();
    fixture.model->error = u"select me"_s;
    fixture.model->devices = QList<AndroidDevice>{readyPhone};
    fixture.settle();
    QCOMPARE(text->textCursor().selectedText(), u"select me"_s);
}

void DialogsTest::opensAndClosesWithTheModel()
{
    ViewFixture fixture;
    fixture.show();
    QVERIFY(!sheetOf(fixture)->isVisible());
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    QVERIFY(sheetOf(fixture)->isModal());
    fixture.model->wireless = true;
    fixture.settle();
    QVERIFY(sheetOf(fixture)->isVisible());
    fixture.model->wireless = false;
    QTRY_VERIFY(!sheetOf(fixture)->isVisible());
    QVERIFY(!fixture.model->wireless());
}

void DialogsTest::writesFalseWhenTheSheetIsDismissed_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("Done") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("window manager") << 2;
}

void DialogsTest::writesFalseWhenTheSheetIsDismissed()
{
    QFETCH(int, way);
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QDialog *sheet = sheetOf(fixture);
    QVERIFY(comesUp(sheet));
    if (way == 0)
        QTest::mouseClick(fixture.find("doneButton"), Qt::LeftButton);
    else if (way == 1)
        QTest::keyClick(sheet, Qt::Key_Escape);
    else
        closeFromOutside(sheet);
    QTRY_VERIFY(!fixture.model->wireless());
    fixture.settle();
    QVERIFY(!sheet->isVisible());
    fixture.model->wireless = true; // and it opens again
    QTRY_VERIFY(sheet->isVisible());
}

void DialogsTest::keepsWhatWasTyped()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    QTest::keyClicks(fixture.find<QLineEdit>("pairingEndpointField"), u"10.0.0.7:4711"_s);
    fixture.find<QAbstractButton>("doneButton")->click();
    fixture.settle();
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    QCOMPARE(fixture.find<QLineEdit>("pairingEndpointField")->text(), u"10.0.0.7:4711"_s);
}

void DialogsTest::hasTheSheetsMeasures()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QVERIFY(comesUp(sheetOf(fixture)));
    QCOMPARE(sheetOf(fixture)->width(), 560);
    constexpr std::array stack{"doneButton",       "sheetText",  "pairHeading",    "pairingEndpointField",
                               "pairingCodeField", "pairButton", "connectHeading", "connectEndpointField",
                               "connectButton"};
    int bottom = 0;
    for (const char *name : stack) {
        const QWidget *widget = fixture.find(name);
        const int top = widget->mapTo(sheetOf(fixture), QPoint(0, 0)).y();
        if (bottom == 0)
            QCOMPARE(top, 30);
        else if (qstrcmp(name, "connectHeading") == 0)
            QCOMPARE(top - bottom, 18 + 1 + 18); // a divider lies between
        else
            QCOMPARE(top - bottom, 18);
        bottom = top + widget->height();
    }
    QCOMPARE(fixture.find("pairingEndpointField")->mapTo(sheetOf(fixture), QPoint(0, 0)).x(), 30);
    QCOMPARE(fixture.find("pairingEndpointField")->width(), 500);
}

void DialogsTest::pressesNothingOnReturn()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    auto *address = fixture.find<QLineEdit>("pairingEndpointField"); // the code is still to come
    address->setFocus();
    QTest::keyClicks(address, u"123456"_s);
    QTest::keyClick(address, Qt::Key_Return);
    fixture.settle();
    QVERIFY(sheetOf(fixture)->isVisible());
    QVERIFY(!fixture.model->error());
    QCOMPARE(fixture.model->pairingEndpoint(), u"123456"_s);
}

void DialogsTest::neverGivesTheCodeAway()
{
    ViewFixture fixture;
    fixture.show();
    fixture.model->wireless = true;
    QTRY_VERIFY(sheetOf(fixture)->isVisible());
    auto *code = fixture.find<QLineEdit>("pairingCodeField");
    QTest::keyClicks(code, u"482913"_s);
    QCOMPARE(code->echoMode(), QLineEdit::Password);
    QVERIFY(!code->displayText().contains(u'9'));
    QVERIFY(code->inputMethodHints().testFlags(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoPredictiveText));
    QCOMPARE(code->style()->styleHint(QStyle::SH_LineEdit_PasswordMaskDelay, nullptr, code), 0);

    QGuiApplication::clipboard()->setText(u"before"_s);
    code->selectAll();
    QTest::keyClick(code, Qt::Key_C, Qt::ControlModifier);
    QTest::keyClick(code, Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
    QVERIFY(!QGuiApplication::clipboard()->text(QClipboard::Selection).contains(u"482913"));

    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(code);
    QVERIFY(accessible->state().passwordEdit);
    QCOMPARE(accessible->text(QAccessible::Name), u"Pairing code"_s);
    for (const auto kind : {QAccessible::Name, QAccessible::Value, QAccessible::Description, QAccessible::Help})
        QVERIFY(!accessible->text(kind).contains(u"482913"));
    if (auto *text = accessible->textInterface())
        QVERIFY(!text->text(0, text->characterCount()).contains(u"482913"));

    fixture.model->pairingCode = QString(); // as pairing does
    fixture.settle();
    QCOMPARE(code->text(), QString());
    QVERIFY(!code->isUndoAvailable());
}

QTEST_MAIN(DialogsTest)
#include "DialogsTest.moc"
