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

/// Whether `dialog` comes up on the screen.
bool comesUp(QDialog *dialog)
{
    return QTest::qWaitFor([dialog] { return dialog->isVisible(); }) && QTest::qWaitForWindowExposed(dialog);
}

/// Remembers whether a dialog was resized while it was on the screen. Not by the display server, whose word about an
/// earlier showing may come late.
class SizeWatch final : public QObject
{
public:
    explicit SizeWatch(QDialog *dialog) { dialog->installEventFilter(this); }

    bool resizedWhileShown = false;

protected:
    bool eventFilter(QObject *dialog, QEvent *event) override
    {
        if (event->type() == QEvent::Resize && !event->spontaneous() && static_cast<QDialog *>(dialog)->isVisible())
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

class DialogsTest final : public ViewTest
{
    Q_OBJECT

private:
    QDialog *alert() const { return fixture->find<ErrorAlert>("alert"); }
    QDialog *sheet() const { return fixture->find<WirelessSheet>("wirelessSheet"); }
    QString alertText() const { return fixture->find<TextBlock>("alertText")->toPlainText(); }

    /// Publishes an error; whether the alert comes up on the screen.
    bool showsError(const QString &text)
    {
        fixture->model->error = text;
        return comesUp(alert());
    }

    bool opensSheet()
    {
        fixture->model->wireless = true;
        return comesUp(sheet());
    }

private Q_SLOTS:
    void init()
    {
        ViewTest::init();
        fixture->show();
    }

    void showsTheErrorUntilItIsDismissed_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("OK") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("window manager") << 2;
        QTest::newRow("Return") << 3;
    }
    void showsTheErrorUntilItIsDismissed()
    {
        QFETCH(int, way);
        fixture->model->error = u"adb: device offline"_s;
        QVERIFY(!alert()->isVisible());
        QVERIFY(comesUp(alert()));
        QCOMPARE(alert()->windowTitle(), u"Varda"_s);
        QCOMPARE(alertText(), u"adb: device offline"_s);
        QVERIFY(alert()->isModal());
        QVERIFY(!reachable(fixture->find("chooseButton")));
        if (way == 0)
            QTest::mouseClick(fixture->find("alertButton"), Qt::LeftButton);
        else if (way == 1)
            QTest::keyClick(alert(), Qt::Key_Escape);
        else if (way == 2)
            closeFromOutside(alert());
        else
            QTest::keyClick(alert(), Qt::Key_Return);
        QTRY_VERIFY(!fixture->model->error());
        QTRY_VERIFY(!alert()->isVisible());
        fixture->settle();
        QVERIFY(!alert()->isVisible());
    }

    void treatsAnEmptyTextAsAnError()
    {
        QVERIFY(showsError(QString()));
        const QWidget *hint = fixture->find("alertHint")->parentWidget();
        const QWidget *title = fixture->find("alertTitle");
        QVERIFY(title->geometry().bottom() < hint->y());
        QVERIFY(hint->y() - title->geometry().bottom() <
                fixture->find("alertButton")->height()); // no empty line between
        fixture->find<QAbstractButton>("alertButton")->click();
        QVERIFY(!fixture->model->error());
    }

    void buildsNoDialogBeforeItIsShown()
    {
        QVERIFY(sheet()->findChildren<QWidget *>().isEmpty());
        QVERIFY(alert()->findChildren<QWidget *>().isEmpty());
        QVERIFY(opensSheet());
        QVERIFY(!sheet()->findChildren<QWidget *>().isEmpty());
        QVERIFY(alert()->findChildren<QWidget *>().isEmpty());
        QVERIFY(showsError(u"adb: device offline"_s));
    }

    void opensOverTheMiddleOfTheWindow_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("one line") << u"adb: device offline"_s;
        QTest::newRow("wrapped lines") << u"a path/without/end/"_s.repeated(20);
        QTest::newRow("more lines than there is room for") << u"one more line of a long complaint\n"_s.repeated(90);
    }
    void opensOverTheMiddleOfTheWindow()
    {
        QFETCH(QString, text);
        QTRY_VERIFY(fixture->view->frameGeometry() != fixture->view->geometry());
        const auto offCentre = [&](const QDialog *dialog) {
            return (dialog->geometry().center() - fixture->view->geometry().center()).manhattanLength();
        };
        for (const QString &shown : {u"an earlier text"_s, text}) {
            fixture->model->status = shown;
            const SizeWatch sheetSize(sheet());
            fixture->model->wireless = true;
            QVERIFY(comesUp(sheet()));
            fixture->model->error = shown;
            const SizeWatch alertSize(alert());
            QVERIFY(comesUp(alert()));
            QTRY_VERIFY2(offCentre(sheet()) <= 2, qPrintable(QString::number(offCentre(sheet()))));
            QTRY_VERIFY2(offCentre(alert()) <= 2, qPrintable(QString::number(offCentre(alert()))));
            QVERIFY(!sheetSize.resizedWhileShown);
            QVERIFY(!alertSize.resizedWhileShown);
            fixture->model->error = std::nullopt;
            fixture->model->wireless = false;
            QTRY_VERIFY(!sheet()->isVisible());
        }
    }

    void takesNoRoomForSpaceAtTheEnd_data()
    {
        QTest::addColumn<QString>("space");
        QTest::newRow("line feed") << u"\n"_s;
        QTest::newRow("line feeds of another system") << u"\r\n\r\n"_s;
        QTest::newRow("blanks on lines of their own") << u" \n\t\n  "_s;
    }
    void takesNoRoomForSpaceAtTheEnd()
    {
        QFETCH(QString, space);
        QVERIFY(showsError(u"  adb:\n\noffline"_s));
        const int height = alert()->height();
        const QString text = u"  adb:\n\noffline"_s + space;
        fixture->model->error = text;
        fixture->settle();
        QCOMPARE(alert()->height(), height);
        QCOMPARE(alertText(), u"  adb:\n\noffline"_s);
        QCOMPARE(fixture->model->error(), text);
    }

    void showsTheLatestError()
    {
        fixture->model->error = u"first"_s;
        QTRY_VERIFY(alert()->isVisible());
        fixture->model->error = u"second"_s;
        QTRY_COMPARE(alertText(), u"second"_s);
        fixture->find<QAbstractButton>("alertButton")->click();
        fixture->settle();
        QVERIFY(!alert()->isVisible());
        fixture->model->error = u"second"_s; // the same failure again is another failure
        QTRY_VERIFY(alert()->isVisible());
    }

    void goesWhenTheErrorIsCleared()
    {
        fixture->model->error = u"gone before it is read"_s;
        QTRY_VERIFY(alert()->isVisible());
        fixture->model->error = std::nullopt;
        QTRY_VERIFY(!alert()->isVisible());
    }

    void showsAnErrorOnTopOfTheSheet()
    {
        QVERIFY(opensSheet());
        QVERIFY(showsError(u"no route to host"_s));
        QCOMPARE(alert()->windowHandle()->transientParent(), sheet()->windowHandle());
        QVERIFY(!reachable(fixture->find("doneButton")));
        QVERIFY(reachable(fixture->find("alertButton")));
        fixture->find<QAbstractButton>("alertButton")->click();
        fixture->settle();
        QVERIFY(sheet()->isVisible());
        QVERIFY(fixture->model->wireless());
        QVERIFY(reachable(fixture->find("doneButton")));
    }

    void takesTheKeyboardFromASheetThatHasJustOpened()
    {
        fixture->model->wireless = true;
        QTRY_VERIFY(sheet()->isVisible());
        fixture->model->error = u"a failure"_s; // before the window manager has given the sheet the keyboard
        QTRY_VERIFY(alert()->isVisible());
        QVERIFY(comesUp(sheet()));
        QTRY_COMPARE(QApplication::activeWindow(), alert());
    }

    void comesBackOnTopWhenTheSheetOpens()
    {
        QVERIFY(showsError(u"an earlier failure"_s));
        QVERIFY(opensSheet());
        QTRY_VERIFY(alert()->isVisible());
        QCOMPARE(alert()->windowHandle()->transientParent(), sheet()->windowHandle());
        QCOMPARE(fixture->model->error(), u"an earlier failure"_s);
        QVERIFY(comesUp(alert()));
        QVERIFY(reachable(fixture->find("alertButton")));
    }

    void comesBackOnTheWindowWhenTheSheetCloses()
    {
        QVERIFY(opensSheet());
        QVERIFY(showsError(u"a failure"_s));
        fixture->model->wireless = false;
        QTRY_VERIFY(!sheet()->isVisible());
        QTRY_VERIFY(alert()->isVisible());
        QCOMPARE(alert()->windowHandle()->transientParent(), fixture->view->windowHandle());
        QCOMPARE(fixture->model->error(), u"a failure"_s);
        QVERIFY(comesUp(alert()));
        QVERIFY(reachable(fixture->find("alertButton")));
    }

    void showsAnErrorOnTopOfAFileDialog()
    {
        QFileDialog dialog(fixture->view.get());
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        bool onTop = false;
        bool stillOpen = false;
        QTimer::singleShot(0, this, [&] {
            fixture->model->error = u"the mirror ended"_s;
            if (comesUp(alert()))
                onTop = reachable(fixture->find("alertButton"));
            fixture->find<QAbstractButton>("alertButton")->click();
            fixture->settle();
            stillOpen = dialog.isVisible();
            dialog.reject();
        });
        dialog.exec(); // as the model's questions about files do
        QVERIFY(onTop);
        QVERIFY(stillOpen);
        QVERIFY(!fixture->model->error());
        QVERIFY(!alert()->isVisible());
    }

    void opensNoFileDialogOnTheAlert()
    {
        QVERIFY(showsError(u"the mirror ended"_s));
        QVERIFY(QTest::qWaitForWindowActive(alert()));
        QWidget *host = nullptr;
        bool onTop = false;
        // The alert goes, and is back with the next error while the question is open.
        QTimer::singleShot(0, this, [&] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            host = dialog->parentWidget();
            fixture->model->error = std::nullopt;
            fixture->settle();
            fixture->model->error = u"it ended again"_s;
            if (comesUp(alert()))
                onTop = reachable(fixture->find("alertButton"));
            dialog->reject();
        });
        QtFileDialogs dialogs;
        QVERIFY(!dialogs.chooseBuild());
        QCOMPARE(host, fixture->view.get());
        QVERIFY(onTop);
    }

    void replacesAFileOnlyWhenTold()
    {
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

    void cutsOffNoColumnOfTheFileDialog()
    {
        QVERIFY(writeFile(u"a build with a rather long name.apk"_s));
        bool fits = true;
        QTimer::singleShot(0, this, [&] {
            auto *details = modal<QFileDialog>()->findChild<QTreeView *>();
            QVERIFY(details);
            QVERIFY(QTest::qWaitFor([&] { return details->model()->rowCount(details->rootIndex()) > 0; }));
            fixture->settle();
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

    void scrollsALongError()
    {
        QVERIFY(showsError(QString(3000, u'x')));
        fixture->settle();
        QVERIFY(alert()->height() < fixture->view->minimumHeight());
        QVERIFY(alert()->width() < fixture->view->minimumWidth());
        QVERIFY(reachable(fixture->find("alertButton")));

        fixture->model->error = u"one more line of a long complaint\n"_s.repeated(90);
        fixture->settle();
        auto *text = fixture->find<TextBlock>("alertText");
        QVERIFY(text->verticalScrollBar()->maximum() > 0);
        QVERIFY(text->verticalScrollBar()->isVisible());
        // The last line that is seen is seen whole: where the text is cut off, the next one begins.
        const int foot = text->viewport()->height();
        const QRect below = text->cursorRect(text->cursorForPosition(QPoint(0, foot + 2)));
        QVERIFY2(qAbs(below.top() - foot) <= 1, qPrintable(u"%1 of %2"_s.arg(below.top()).arg(foot)));
        QVERIFY(alert()->height() < fixture->view->minimumHeight());

        fixture->model->error = u"short"_s;
        fixture->settle();
        QVERIFY(alert()->height() < 220);
    }

    void keepsTheSelectionInTheError()
    {
        fixture->model->error = u"select me"_s;
        QTRY_VERIFY(alert()->isVisible());
        auto *text = fixture->find<TextBlock>("alertText");
        text->selectAll();
        fixture->model->error = u"select me"_s;
        fixture->model->devices = QList<AndroidDevice>{readyPhone};
        fixture->settle();
        QCOMPARE(text->textCursor().selectedText(), u"select me"_s);
    }

    void opensAndClosesWithTheModel()
    {
        QVERIFY(!sheet()->isVisible());
        QVERIFY(opensSheet());
        QVERIFY(sheet()->isModal());
        fixture->model->wireless = true;
        fixture->settle();
        QVERIFY(sheet()->isVisible());
        fixture->model->wireless = false;
        QTRY_VERIFY(!sheet()->isVisible());
        QVERIFY(!fixture->model->wireless());
    }

    void writesFalseWhenTheSheetIsDismissed_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("Done") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("window manager") << 2;
    }
    void writesFalseWhenTheSheetIsDismissed()
    {
        QFETCH(int, way);
        QVERIFY(opensSheet());
        if (way == 0)
            QTest::mouseClick(fixture->find("doneButton"), Qt::LeftButton);
        else if (way == 1)
            QTest::keyClick(sheet(), Qt::Key_Escape);
        else
            closeFromOutside(sheet());
        QTRY_VERIFY(!fixture->model->wireless());
        fixture->settle();
        QVERIFY(!sheet()->isVisible());
        fixture->model->wireless = true; // and it opens again
        QTRY_VERIFY(sheet()->isVisible());
    }

    void keepsWhatWasTyped()
    {
        QVERIFY(opensSheet());
        QTest::keyClicks(fixture->find<QLineEdit>("pairingEndpointField"), u"10.0.0.7:4711"_s);
        fixture->find<QAbstractButton>("doneButton")->click();
        fixture->settle();
        QVERIFY(opensSheet());
        QCOMPARE(fixture->find<QLineEdit>("pairingEndpointField")->text(), u"10.0.0.7:4711"_s);
    }

    void hasTheSheetsMeasures()
    {
        QVERIFY(opensSheet());
        QCOMPARE(sheet()->width(), 560);
        constexpr std::array stack{"doneButton",       "sheetText",  "pairHeading",    "pairingEndpointField",
                                   "pairingCodeField", "pairButton", "connectHeading", "connectEndpointField",
                                   "connectButton"};
        int bottom = 0;
        for (const char *name : stack) {
            const QWidget *widget = fixture->find(name);
            const int top = widget->mapTo(sheet(), QPoint(0, 0)).y();
            if (bottom == 0)
                QCOMPARE(top, 30);
            else if (qstrcmp(name, "connectHeading") == 0)
                QCOMPARE(top - bottom, 18 + 1 + 18); // a divider lies between
            else
                QCOMPARE(top - bottom, 18);
            bottom = top + widget->height();
        }
        QCOMPARE(fixture->find("pairingEndpointField")->mapTo(sheet(), QPoint(0, 0)).x(), 30);
        QCOMPARE(fixture->find("pairingEndpointField")->width(), 500);
    }

    void pressesNothingOnReturn()
    {
        QVERIFY(opensSheet());
        auto *address = fixture->find<QLineEdit>("pairingEndpointField"); // the code is still to come
        address->setFocus();
        QTest::keyClicks(address, u"123456"_s);
        QTest::keyClick(address, Qt::Key_Return);
        fixture->settle();
        QVERIFY(sheet()->isVisible());
        QVERIFY(!fixture->model->error());
        QCOMPARE(fixture->model->pairingEndpoint(), u"123456"_s);
    }

    void neverGivesTheCodeAway()
    {
        QVERIFY(opensSheet());
        auto *code = fixture->find<QLineEdit>("pairingCodeField");
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

        fixture->model->pairingCode = QString(); // as pairing does
        fixture->settle();
        QCOMPARE(code->text(), QString());
        QVERIFY(!code->isUndoAvailable());
    }
};

QTEST_MAIN(DialogsTest)
#include "DialogsTest.moc"
