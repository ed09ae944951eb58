// Finding words in the console: what is marked and counted, where the keys lead, and what a new snapshot leaves as it
// is.
#include "Support/ViewFixture.h"
#include "Varda/View/Widgets/ConsoleText.h"
#include "Varda/View/Widgets/Theme.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBlock>

#include <functional>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// Lines `first` to `last`; every tenth holds "Error".
QString lines(int first, int last)
{
    QString text;
    for (int i = first; i <= last; ++i)
        text += u"line %1 %2\n"_s.arg(i).arg(i % 10 == 0 ? u"Error"_s : u"fine"_s);
    return text;
}

} // namespace

class FindTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        ViewTest::init();
        fixture->view->resize(980, 700);
        fixture->attach(readyPhone);
        fixture->activate();
        text = fixture->find<ConsoleText>("consoleText");
        field = fixture->find<QLineEdit>("findField");
    }

    void opensInSightAndReturnsTheFocus()
    {
        show(lines(1, 350));
        QWidget *before = fixture->find("launchButton");
        before->setFocus();
        QVERIFY(!isOpen());
        press(Qt::Key_F, Qt::ControlModifier);
        ViewFixture::settle();
        QVERIFY(isOpen());
        QCOMPARE(focus(), field);
        QCOMPARE(text->height(), theme::consoleHeight);
        const QWidget *panel = fixture->find("consolePanel");
        QVERIFY(fixture->view->rect().contains(QRect(panel->mapTo(fixture->view.get(), QPoint(0, 0)), panel->size())));
        press(Qt::Key_F, Qt::ControlModifier); // from the line itself: the focus came from elsewhere
        QTest::keyClick(focus(), Qt::Key_Escape);
        QVERIFY(!isOpen());
        QCOMPARE(focus(), before);

        find(u"error"_s);
        before->setEnabled(false);
        QTest::keyClick(focus(), Qt::Key_Escape);
        QCOMPARE(focus(), text);
        QCOMPARE(text->matchCount(), 0); // nothing stays marked
    }

    void closesFromTheConsoleToo()
    {
        show(lines(1, 350));
        find(u"error"_s);
        text->setFocus();
        QTest::keyClick(text, Qt::Key_Escape);
        QVERIFY(!isOpen());
        QCOMPARE(focus(), text);
        press(Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(field->selectedText(), u"error"_s);
        QTest::mouseClick(fixture->find("findCloseButton"), Qt::LeftButton);
        QVERIFY(!isOpen());
    }

    void counts_data()
    {
        QTest::addColumn<QString>("log");
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("count");
        QTest::newRow("nothing asked") << u"a"_s << QString() << QString();
        QTest::newRow("nothing found") << u"a"_s << u"b"_s << u"No match"_s;
        QTest::newRow("any case") << u"Error error ERROR\nÄpfel"_s << u"eRRor"_s << u"1 of 3"_s;
        QTest::newRow("any case, not ASCII") << u"Äpfel äpfel"_s << u"ÄP"_s << u"1 of 2"_s;
        QTest::newRow("no patterns") << u"a.b axb [a-z]* (.*)"_s << u".*"_s << u"1 of 1"_s;
        QTest::newRow("a bracket alone") << u"[x"_s << u"["_s << u"1 of 1"_s;
        QTest::newRow("none overlap") << u"aaaaa"_s << u"aa"_s << u"1 of 2"_s;
        QTest::newRow("not over a line's end") << u"ab\nab"_s << u"ba"_s << u"No match"_s;
        QTest::newRow("blanks count") << u"a  b a b"_s << u"a b"_s << u"1 of 1"_s;
        QTest::newRow("CR LF") << u"one x\r\ntwo x\r\nx"_s << u"x"_s << u"1 of 3"_s;
        QTest::newRow("controls, mark-up, directions")
            << u"<b>x</b>\u0000\u202Ex\u2028x \u05E9x\t\U0001F600x"_s << u"x"_s << u"1 of 5"_s;
        QTest::newRow("outside the BMP") << u"\U0001F600\U0001F601\U0001F600"_s << u"\U0001F600"_s << u"1 of 2"_s;
        QTest::newRow("wide") << QString(200'000, u'w') + u"x"_s << u"x"_s << u"1 of 1"_s;
    }
    void counts()
    {
        QFETCH(QString, log);
        QFETCH(QString, words);
        press(Qt::Key_F, Qt::ControlModifier);
        show(log);
        field->setText(words);
        ViewFixture::settle();
        QTEST(count(), "count");
        fixture->view->grab();
        press(Qt::Key_F3);
        if (!count().isEmpty() && text->matchCount() > 0)
            QCOMPARE(text->textCursor().selectedText().compare(words, Qt::CaseInsensitive), 0);
    }

    void walksInCircles()
    {
        show(u"x\n"_s.repeated(3));
        find(u"x"_s);
        const auto after = [this](Qt::Key key, Qt::KeyboardModifiers held = {}) {
            QTest::keyClick(focus(), key, held);
            return count();
        };
        QCOMPARE(count(), u"1 of 3"_s);
        QCOMPARE(after(Qt::Key_F3), u"2 of 3"_s);
        QCOMPARE(after(Qt::Key_Return), u"3 of 3"_s);
        QCOMPARE(after(Qt::Key_F3), u"1 of 3"_s);
        QCOMPARE(after(Qt::Key_F3, Qt::ShiftModifier), u"3 of 3"_s);
        QCOMPARE(after(Qt::Key_Return, Qt::ShiftModifier), u"2 of 3"_s);
        QTest::mouseClick(fixture->find("findNextButton"), Qt::LeftButton);
        QCOMPARE(count(), u"3 of 3"_s);
        QTest::mouseClick(fixture->find("findPreviousButton"), Qt::LeftButton);
        QCOMPARE(count(), u"2 of 3"_s);
    }

    void opensOnTheFirstWalk()
    {
        show(lines(1, 350));
        find(u"error"_s);
        QTest::keyClick(focus(), Qt::Key_Escape);
        press(Qt::Key_F3);
        QVERIFY(isOpen());
        QVERIFY(count().endsWith(u" of 35"));
    }

    void goesOnFromWhatIsInSight()
    {
        show(lines(1, 350));
        find(u"error"_s);
        QCOMPARE(matchedLine(), u"line 340 Error"_s); // of those in sight the first
        field->setText(u"line 5 "_s);                 // none follows: the last
        QCOMPARE(matchedLine(), u"line 5 fine"_s);
        field->setText(u"error"_s);
        QCOMPARE(matchedLine(), u"line 10 Error"_s);
        bar()->setValue(200);
        press(Qt::Key_F3);
        QCOMPARE(matchedLine(), u"line 210 Error"_s);
        bar()->setValue(100);
        press(Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(matchedLine(), u"line 110 Error"_s);
    }

    void showsAMatchFarToTheRight()
    {
        show(u"first here\n"_s + QString(3000, u'w') + u"here"_s + QString(3000, u'w') + u"\nhere last"_s);
        find(u"here"_s);
        const auto inSight = [this] {
            QTextCursor start = text->textCursor();
            start.setPosition(start.selectionStart());
            return text->viewport()->rect().contains(text->cursorRect(start) | text->cursorRect());
        };
        for (int match = 0; match < 4; ++match) {
            QVERIFY2(inSight(), qPrintable(count()));
            press(Qt::Key_F3);
        }
        QCOMPARE(count(), u"2 of 3"_s);
        press(Qt::Key_F3);
        QCOMPARE(text->horizontalScrollBar()->value(), 0);
    }

    void keepsPlaceAndMatchThroughSnapshots_data()
    {
        QTest::addColumn<QString>("head");
        QTest::addColumn<QString>("lineEnd");
        QTest::newRow("LF") << QString() << u"\n"_s;
        QTest::newRow("CR LF") << QString() << u"\r\n"_s;
        QTest::newRow("below a divider") << u"--------- beginning of main\n"_s << u"\n"_s;
    }
    void keepsPlaceAndMatchThroughSnapshots()
    {
        QFETCH(QString, head);
        QFETCH(QString, lineEnd);
        const auto snapshot = [&](int first, int last) -> QString {
            return head + lines(first, last).replace(u"\n"_s, lineEnd);
        };
        show(snapshot(1, 350));
        find(u"error"_s);
        QCOMPARE(count(), u"34 of 35"_s); // in sight of the end, which goes on
        QCOMPARE(bar()->value(), bar()->maximum());
        const int distance = text->cursorRect().top();
        show(snapshot(21, 370));
        show(snapshot(41, 390));
        QCOMPARE(matchedLine(), u"line 340 Error"_s);
        QCOMPARE(text->cursorRect().top(), distance);
        QCOMPARE(count(), u"30 of 35"_s);
        press(Qt::Key_F3);
        QCOMPARE(matchedLine(), u"line 350 Error"_s);
        show(lines(1001, 1350)); // has nothing of the former one
        QCOMPARE(count(), u"35 matches"_s);
        QCOMPARE_NE(bar()->value(), bar()->maximum());
    }

    void followsAgain_data()
    {
        using Gesture = std::function<void(FindTest &)>;
        QTest::addColumn<Gesture>("gesture");
        QTest::newRow("closed") << Gesture([](FindTest &test) { QTest::keyClick(test.focus(), Qt::Key_Escape); });
        QTest::newRow("words taken out") << Gesture([](FindTest &test) { test.field->clear(); });
        QTest::newRow("at the end") << Gesture(
            [](FindTest &test) { test.bar()->triggerAction(QAbstractSlider::SliderToMaximum); });
    }
    void followsAgain()
    {
        QFETCH(std::function<void(FindTest &)>, gesture);
        show(lines(1, 350));
        find(u"line 5 "_s);
        show(lines(2, 351));
        QCOMPARE(matchedLine(), u"line 5 fine"_s);
        QVERIFY(bar()->value() < bar()->maximum());
        gesture(*this);
        show(lines(3, 352));
        QCOMPARE(bar()->value(), bar()->maximum());
    }

    void doesNothingForTheSameSnapshot()
    {
        class Counter final : public QObject
        {
        public:
            bool eventFilter(QObject *, QEvent *event) override
            {
                paints += event->type() == QEvent::Paint;
                return false;
            }
            int paints = 0;
        };
        show(lines(1, 350));
        find(u"error"_s);
        fixture->find("mainColumn")->setFocus(); // the field's cursor blinks
        ViewFixture::settle();
        int searches = 0;
        const auto watching = connect(text, &ConsoleText::matchesChanged, this, [&] { ++searches; });
        Counter counter;
        text->viewport()->installEventFilter(&counter);
        fixture->find("findCount")->installEventFilter(&counter);
        show(lines(1, 350));
        QCOMPARE(searches, 0);
        QCOMPARE(counter.paints, 0);
        show(lines(2, 351));
        disconnect(watching);
        QCOMPARE_NE(searches, 0);
        QCOMPARE_NE(counter.paints, 0);
    }

    void marksWhatIsInSight()
    {
        const auto marked = [this](int line, int column) {
            QTextCursor place(text->document()->findBlockByNumber(line));
            place.setPosition(place.position() + column);
            const QPoint corner = text->viewport()->mapTo(text, text->cursorRect(place).topLeft());
            return text->grab().toImage().pixelColor(corner + QPoint(3, 1)) != theme::consoleBackground;
        };
        const QString pale = u". . . "_s; // next to nothing is drawn by the text itself
        show(pale + pale + u"\n"_s + pale + u"-"_s + pale + u"-\n"_s + pale.repeated(200) + u"-"_s + pale);
        QVERIFY(!marked(1, 6));
        find(u"-"_s);
        QCOMPARE(count(), u"1 of 3"_s);
        QVERIFY(!marked(0, 6) && !marked(1, 8));
        QVERIFY(marked(1, 6) && marked(1, 13));
        press(Qt::Key_F3, Qt::ShiftModifier);
        QVERIFY(marked(2, 1200) && !marked(2, 1202));
        QTest::keyClick(focus(), Qt::Key_Escape);
        text->moveCursor(QTextCursor::Start);
        QVERIFY(!marked(1, 6));
    }

    void findsNothingInItsOwnNotice()
    {
        find(u"Device"_s);
        QCOMPARE(count(), u"No match"_s);
        show(u"a device"_s);
        QCOMPARE(count(), u"1 match"_s);
        show({});
        QCOMPARE(count(), u"No match"_s);
        QVERIFY(!fixture->find("findNextButton")->isEnabled());
    }

    void isNamed()
    {
        press(Qt::Key_F, Qt::ControlModifier);
        const auto name = [this](const char *widget) {
            return QAccessible::queryAccessibleInterface(fixture->find(widget))->text(QAccessible::Name);
        };
        QCOMPARE(name("findField"), u"Find in console"_s);
        QCOMPARE(name("findPreviousButton"), u"Previous match"_s);
        QCOMPARE(name("findNextButton"), u"Next match"_s);
        QCOMPARE(name("findCloseButton"), u"Close find"_s);
        QVERIFY(fixture->find("findNextButton")->toolTip().contains(u"(F3)"));
        QVERIFY(fixture->find("findPreviousButton")->toolTip().contains(u"(Shift+F3)"));
    }

    void isReachedByTab()
    {
        show(lines(1, 350));
        find(u"error"_s);
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            order << focus()->objectName();
            QTest::keyClick(focus(), Qt::Key_Tab);
        }
        QCOMPARE(order, QStringList({u"findField"_s, u"findPreviousButton"_s, u"findNextButton"_s, u"findCloseButton"_s,
                                     u"consoleText"_s}));
    }

    void copiesByKeys()
    {
        show(u"one\ntwo"_s);
        text->setFocus();
        QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"one\ntwo"_s);
        find(u"TWO"_s);
        QTest::keyClick(focus(), Qt::Key_Escape);
        QTest::keyClick(text, Qt::Key_C, Qt::ControlModifier); // the match stays selected
        QCOMPARE(QGuiApplication::clipboard()->text(), u"two"_s);
    }

    void takesAPackageByDoubleClick_data()
    {
        QTest::addColumn<QString>("log");
        QTest::addColumn<QPoint>("place"); // from the first line's
        QTest::addColumn<QString>("package");
        const QString before = u"org.example.before"_s;
        QTest::newRow("a package") << u"com.example.app\nx"_s << QPoint() << u"com.example.app"_s;
        QTest::newRow("beside it") << u"com.example.app\nx"_s << QPoint(400, 0) << u"com.example.app"_s;
        QTest::newRow("blanks around it") << u"  com.example.app \t\r\nx"_s << QPoint(30, 0) << u"com.example.app"_s;
        QTest::newRow("below the last line") << u"com.example.app"_s << QPoint(0, 100) << before;
        QTest::newRow("more on the line") << u"com.example.app x"_s << QPoint() << before;
        QTest::newRow("no package") << u"com"_s << QPoint() << before;
        QTest::newRow("hostile") << u"com.example.app;reboot"_s << QPoint() << before;
        QTest::newRow("the other line") << u"com.example.app\nx y"_s << QPoint(0, 15) << before;
    }
    void takesAPackageByDoubleClick()
    {
        QFETCH(QString, log);
        QFETCH(QPoint, place);
        fixture->model->packageName = u"org.example.before"_s;
        show(log);
        const QPoint line = text->cursorRect(QTextCursor(text->document()->firstBlock())).center() + QPoint(3, 0);
        QTest::mouseDClick(text->viewport(), Qt::LeftButton, {}, line + place);
        ViewFixture::settle();
        QTEST(fixture->model->packageName(), "package");
        QCOMPARE(fixture->model->logs(), log);
        QVERIFY(!fixture->model->busy());
        QCOMPARE(fixture->find<QLineEdit>("packageField")->text(), fixture->model->packageName());
    }

private:
    void show(const QString &log)
    {
        fixture->model->logs = log;
        ViewFixture::settle();
    }

    void find(const QString &words)
    {
        press(Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(field, words);
        ViewFixture::settle();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers held = {}) { QTest::keyClick(fixture->view.get(), key, held); }
    QString count() const { return fixture->find<QLabel>("findCount")->text(); }
    bool isOpen() const { return fixture->find("findLine")->isVisible(); }
    QWidget *focus() const { return fixture->view->focusWidget(); }
    QString matchedLine() const { return text->textCursor().block().text(); }
    QScrollBar *bar() const { return text->verticalScrollBar(); }

    ConsoleText *text = nullptr;
    QLineEdit *field = nullptr;
};

QTEST_MAIN(FindTest)
#include "FindTest.moc"
