// A tick of the poll loop republishes everything: what a user is reading, selecting or typing is left alone.
#include "Support/ViewFixture.h"
#include "Varda/View/DeviceRow.h"
#include "Varda/View/Widgets/ConsoleText.h"

#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// Counts paint events in the program while it lives.
class PaintCounter final : public QObject
{
public:
    PaintCounter() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType())
            painted << QString::fromLatin1(watched->metaObject()->className()) + u' ' + watched->objectName();
        return false;
    }

    QStringList painted;
};

/// Lines `from` to `to` of a log, each ended.
QString lines(int from, int to)
{
    QString text;
    for (int i = from; i <= to; ++i)
        text += u"11-20 14:02:11.%1  8123  8123 I Tag: line %1\n"_s.arg(i, 4, 10, QLatin1Char('0'));
    return text;
}

} // namespace

class StabilityTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void repaintsNothingForEqualValues()
    {
        fixture->list({readyPhone, shyPhone}, readyPhone.id);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->logs = lines(1, 350);
        fixture->model->packageName = u"com.example.app"_s;
        fixture->activate(); // what is painted on the way there is not counted
        QTRY_VERIFY(!fixture->find<QLabel>("apkFacts")->text().isEmpty());
        fixture->settle();

        const PaintCounter counter;
        for (int tick = 0; tick < 3; ++tick) {
            fixture->model->devices = QList<AndroidDevice>(fixture->model->devices());
            fixture->model->selectedID = std::optional(readyPhone.id);
            fixture->model->status = QString(fixture->model->status());
            fixture->model->logs = lines(1, 350);
            fixture->model->packageName = u"com.example.app"_s;
            fixture->model->wireless = false;
            fixture->model->error = std::nullopt;
            fixture->settle();
        }
        QCOMPARE(counter.painted, QStringList());
    }

    void rendersOncePerTurn()
    {
        auto *console = fixture->find<ConsoleText>("consoleText");
        int changes = 0;
        QObject::connect(console, &QPlainTextEdit::textChanged, this, [&changes] { ++changes; });
        for (int i = 0; i < 20; ++i)
            fixture->model->logs = QString::number(i);
        QCOMPARE(changes, 0);
        fixture->settle();
        QCOMPARE(console->toPlainText(), u"19"_s);
        QVERIFY(changes <= 2); // emptied and filled
    }

    void keepsSelectionScrollAndFocus()
    {
        fixture->attach(readyPhone);
        fixture->model->logs = lines(1, 350);
        fixture->model->packageName = u"com.example.app"_s;
        fixture->show();
        auto *column = fixture->find<QScrollArea>("mainColumn")->verticalScrollBar();
        column->setValue(120);
        auto *field = fixture->find<QLineEdit>("packageField");
        field->setFocus();
        field->setSelection(4, 7);
        auto *console = fixture->find<ConsoleText>("consoleText");
        console->verticalScrollBar()->setValue(100);
        QTextCursor selection = console->textCursor();
        selection.setPosition(2000);
        selection.setPosition(2100, QTextCursor::KeepAnchor);
        console->setTextCursor(selection);
        console->verticalScrollBar()->setValue(100);

        fixture->model->devices = QList<AndroidDevice>{readyPhone};
        fixture->model->logs = lines(1, 350);
        fixture->settle();
        QCOMPARE(column->value(), 120);
        QCOMPARE(fixture->view->focusWidget(), field);
        QCOMPARE(field->selectedText(), u"example"_s);
        QCOMPARE(console->verticalScrollBar()->value(), 100);
        QCOMPARE(console->textCursor().anchor(), 2000);
        QCOMPARE(console->textCursor().position(), 2100);
    }

    void keepsRowsAndTheirFocus()
    {
        fixture->model->devices = QList<AndroidDevice>{shyPhone, readyPhone};
        fixture->show();
        auto rows = fixture->view->findChildren<DeviceRow *>();
        DeviceRow *focused = rows.at(1);
        focused->setFocus();

        AndroidDevice authorised = shyPhone;
        authorised.state = u"device"_s;
        fixture->model->devices = QList<AndroidDevice>{anEmulator, readyPhone, authorised};
        fixture->settle();
        QCOMPARE(fixture->view->focusWidget(), focused);
        QCOMPARE(focused->device(), readyPhone);
        rows = fixture->view->findChildren<DeviceRow *>();
        std::sort(rows.begin(), rows.end(), [](auto *a, auto *b) { return a->y() < b->y(); });
        QCOMPARE(rows.at(0)->device(), anEmulator);
        QCOMPARE(rows.at(1), focused);
        QCOMPARE(rows.at(2)->device(), authorised);
    }

    void followsTheEndOfTheConsole()
    {
        fixture->show();
        const auto *console = fixture->find<ConsoleText>("consoleText");
        const auto *bar = console->verticalScrollBar();
        const QString wide = u"W Tag: "_s + QString(400, u'w') + u'\n';
        const QString tall = u"I Tag: 安装 ประวัติ ༄༅། ﷽ 👩🏽‍🚀\n"_s.repeated(9);
        const QStringList snapshots{
            u"one line\n"_s,
            lines(1, 350),
            lines(40, 389),        // the window of 350 lines moved on
            lines(50, 389) + wide, // the horizontal bar comes
            lines(60, 389) + wide + lines(390, 400),
            lines(5000, 5349), // nothing in common; the bar goes
            lines(5010, 5349) + tall,
            lines(5020, 5349) + tall + wide,
            lines(1, 12) + wide, // the bar makes the difference between what fits and what does not
            lines(7000, 7300) + wide + tall.repeated(5),
            lines(7010, 7300) + wide + tall.repeated(5) + lines(7301, 7340),
            u"two\nlines\n"_s,
            lines(8000, 8300),
        };
        for (int i = 0; i < 2 * snapshots.size(); ++i) {
            fixture->model->logs = snapshots.at(i % snapshots.size());
            fixture->settle();
            fixture->view->resize(i % 3 == 0 ? 980 : 1600, 700);
            fixture->settle();
            QVERIFY2(bar->value() == bar->maximum(),
                     qPrintable(u"snapshot %1: %2 of %3"_s.arg(i).arg(bar->value()).arg(bar->maximum())));
            QTextCursor end(console->document());
            end.movePosition(QTextCursor::End);
            QVERIFY2(console->viewport()->rect().contains(console->cursorRect(end)), qPrintable(QString::number(i)));
        }
    }

    void staysWhereTheUserScrolledTo()
    {
        fixture->show();
        auto *console = fixture->find<ConsoleText>("consoleText");
        fixture->model->logs = lines(1, 350);
        fixture->settle();
        console->verticalScrollBar()->setValue(200);
        fixture->model->logs = lines(5000, 5349); // nothing in common: the same place
        fixture->settle();
        QCOMPARE(console->verticalScrollBar()->value(), 200);
        fixture->model->logs = lines(5010, 5359); // ten lines gone above: the same lines
        fixture->settle();
        QCOMPARE(console->verticalScrollBar()->value(), 190);
    }

    void keepsASelectionWhileLinesAreAdded()
    {
        fixture->show();
        auto *console = fixture->find<ConsoleText>("consoleText");
        fixture->model->logs = lines(1, 350);
        fixture->settle();
        QTextCursor selection = console->document()->find(u"line 0200"_s);
        console->setTextCursor(selection);
        fixture->model->logs = lines(21, 370);
        fixture->settle();
        QCOMPARE(console->textCursor().selectedText(), u"line 0200"_s);
    }

    void showsEverySnapshotExactly_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("continued") << lines(1, 20) << lines(5, 24);
        QTest::newRow("longer") << lines(1, 20) << lines(1, 25);
        QTest::newRow("shorter") << lines(1, 20) << lines(1, 5);
        QTest::newRow("last line grew") << u"a\nb"_s << u"a\nbcd\ne"_s;
        QTest::newRow("only the last line stays") << u"a\nb\nc\n"_s << u"c\nd\n"_s;
        QTest::newRow("blank lines") << u"\n\n\n"_s << u"\n\nx\n"_s;
        QTest::newRow("repeated lines") << u"x\nx\nx\n"_s << u"x\nx\ny\n"_s;
        QTest::newRow("to nothing in common") << u"a\n"_s << u"b"_s;
        QTest::newRow("wide characters") << u"😀 one\ntwo\n"_s << u"two\n😀 three\n"_s;
    }
    void showsEverySnapshotExactly()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        ConsoleText console;
        console.showLog(before);
        QCOMPARE(console.toPlainText(), before);
        console.showLog(after);
        QCOMPARE(console.toPlainText(), after);
    }

    void laysOutOnlyTheLinesInSight()
    {
        fixture->show();
        const auto *console = fixture->find<ConsoleText>("consoleText");
        const auto laidOut = [console] {
            int count = 0;
            for (QTextBlock block = console->document()->begin(); block.isValid(); block = block.next())
                count += block.layout()->lineCount() > 0 ? 1 : 0;
            return count;
        };
        const int inSight = console->viewport()->height() / console->fontMetrics().lineSpacing();
        for (int first = 1; first < 3000; first += 1000) {
            fixture->model->logs = lines(first, first + 349);
            fixture->settle();
            QVERIFY2(laidOut() > 0 && laidOut() <= inSight + 3, qPrintable(QString::number(laidOut())));
        }
    }
};

QTEST_MAIN(StabilityTest)
#include "StabilityTest.moc"
