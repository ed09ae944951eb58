// The console: a log is followed at its end, a list is read from its top, and both come into view when asked for.
#include "Support/StandInTools.h"
#include "Support/ViewFixture.h"
#include "Varda/View/Widgets/ConsoleText.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

#include <functional>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

const QStringList listing{u"-s"_s, readyPhone.id, u"shell"_s, u"pm"_s, u"list"_s, u"packages"_s, u"-3"_s};

/// `count` lines, each different from every other and from those of another `name`.
QString lines(const QString &name, int count)
{
    QString text;
    for (int i = 1; i <= count; ++i)
        text += name + u' ' + QString::number(i) + u'\n';
    return text;
}

} // namespace

class ConsoleTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        tools.emplace();
        tools->adb().on(listing).waitsFor(u"go"_s).prints(lines(u"package:org.example.app"_s, 60).toUtf8());
        ViewTest::init();
        fixture->view->resize(980, 700);
        fixture->attach(readyPhone);
        fixture->show();
        text = fixture->find<ConsoleText>("consoleText");
    }

    void cleanup()
    {
        ViewTest::cleanup();
        tools.reset();
    }

    /// Which Qt would find by itself, but anew for each letter.
    void namesTheFontOfEastAsianLetters()
    {
        const QFont own = text->font();
        show(lines(u"first"_s, 40));
        QCOMPARE(text->font(), own);
        show(lines(u"日志 로그 ログ"_s, 40));
        QCOMPARE(text->font().families().size(), 2);
        QCOMPARE(text->font().families().constFirst(), own.family());
        const QImage shown = text->grab().toImage();
        text->setFont(own);
        QCOMPARE(text->grab().toImage(), shown);
    }

    void followsTheEndUntilTheUserScrollsAway_data()
    {
        using Gesture = std::function<void(ConsoleTest &)>;
        QTest::addColumn<Gesture>("away");
        QTest::addColumn<Gesture>("back");
        const auto key = [](Qt::Key pressed, Qt::KeyboardModifiers held, int times = 1) {
            return [=](const ConsoleTest &test) {
                for (int i = 0; i < times; ++i)
                    QTest::keyClick(test.text, pressed, held);
            };
        };
        const auto action = [](QAbstractSlider::SliderAction done) {
            return [=](const ConsoleTest &test) { test.bar()->triggerAction(done); };
        };
        QTest::newRow("wheel") << Gesture([](ConsoleTest &test) { test.turnWheel(-9); })
                               << Gesture([](ConsoleTest &test) { test.turnWheel(90); });
        QTest::newRow("cursor keys") << Gesture(key(Qt::Key_Home, Qt::ControlModifier))
                                     << Gesture(key(Qt::Key_End, Qt::ControlModifier));
        QTest::newRow("page keys") << Gesture(key(Qt::Key_PageUp, {})) << Gesture(key(Qt::Key_PageDown, {}, 40));
        QTest::newRow("bar") << Gesture(action(QAbstractSlider::SliderPageStepSub))
                             << Gesture(action(QAbstractSlider::SliderToMaximum));
    }
    void followsTheEndUntilTheUserScrollsAway()
    {
        QFETCH(std::function<void(ConsoleTest &)>, away);
        QFETCH(std::function<void(ConsoleTest &)>, back);
        show(lines(u"first"_s, 350));
        const QString wide = QString(300, u'w') + u'\n';
        text->setFocus();
        away(*this);
        const int row = bar()->value();
        QVERIFY(row < bar()->maximum());
        show(lines(u"second"_s, 350) + wide);
        QCOMPARE(bar()->value(), row);
        back(*this);
        QCOMPARE(bar()->value(), bar()->maximum());
        show(lines(u"third"_s, 350) + wide);
        QCOMPARE(bar()->value(), bar()->maximum());
    }

    void followsALogAfterANotice()
    {
        show(lines(u"first"_s, 350));
        turnWheel(-60);
        show(u"This app is not running. Launch it to see its logs."_s);
        show(lines(u"second"_s, 350));
        QCOMPARE(bar()->value(), bar()->maximum());
    }

    void startsAListAtItsTop()
    {
        show(lines(u"first"_s, 350));
        for (int time = 0; time < 2; ++time) { // the second list is equal to the first
            listApps();
            QVERIFY(text->toPlainText().startsWith(u"org.example.app 1\n"_s));
            QVERIFY(bar()->maximum() > 0);
            QCOMPARE(bar()->value(), 0);
            turnWheel(6);
            QCOMPARE_NE(bar()->value(), 0);
        }
        show(lines(u"second"_s, 350)); // a log, which follows its end though the list was scrolled
        QCOMPARE(bar()->value(), bar()->maximum());
    }

    void staysAtTheEndIfAListCannotBeRead()
    {
        tools->adb().on(listing).complains("error: closed").exits(1);
        show(lines(u"first"_s, 350));
        const int pageBefore = page()->value();
        listApps();
        QVERIFY(fixture->model->error());
        QCOMPARE(bar()->value(), bar()->maximum());
        QCOMPARE(page()->value(), pageBefore);
    }

    void bringsAListIntoView_data()
    {
        QTest::addColumn<bool>("scrolledMeanwhile");
        QTest::newRow("from out of sight") << false;
        QTest::newRow("not if the user has scrolled") << true;
    }
    void bringsAListIntoView()
    {
        QFETCH(bool, scrolledMeanwhile);
        page()->setValue(200);
        QVERIFY(!inSight());
        listApps([&] {
            if (scrolledMeanwhile)
                page()->setValue(180);
        });
        QCOMPARE(inSight(), !scrolledMeanwhile);
        if (scrolledMeanwhile)
            QCOMPARE(page()->value(), 180);
        const int place = page()->value();
        listApps(); // what is in sight stays where it is
        QCOMPARE(inSight(), true);
        if (!scrolledMeanwhile)
            QCOMPARE(page()->value(), place);
    }

    void comesIntoViewWhenItIsTurnedOn()
    {
        auto *button = fixture->find("logsButton");
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(inSight());
        page()->setValue(0);
        QTest::mouseClick(button, Qt::LeftButton); // off
        QCOMPARE(page()->value(), 0);
    }

private:
    void show(const QString &log)
    {
        fixture->model->logs = log;
        ViewFixture::settle();
    }

    void turnWheel(int lines)
    {
        const QPointF middle = text->viewport()->rect().center();
        QWheelEvent turn(middle, text->viewport()->mapToGlobal(middle), {}, {0, -40 * lines}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(text->viewport(), &turn);
    }

    /// Presses "List apps" and waits until that has ended, once `meanwhile` was done.
    void listApps(const std::function<void()> &meanwhile = [] {})
    {
        QTest::mouseClick(fixture->find("listButton"), Qt::LeftButton);
        QVERIFY(fixture->model->busy());
        ViewFixture::settle();
        meanwhile();
        tools->open(u"go"_s);
        QTRY_VERIFY(!fixture->model->busy());
        ViewFixture::settle();
    }

    bool inSight() const
    {
        const QWidget *panel = fixture->find("consolePanel");
        const QRect place(panel->mapTo(fixture->view.get(), QPoint(0, 0)), panel->size());
        const QWidget *status = fixture->find("statusLine");
        const QRect covered(status->mapTo(fixture->view.get(), QPoint(0, 0)), status->size());
        return fixture->view->rect().contains(place) && !covered.intersects(place);
    }

    QScrollBar *bar() const { return text->verticalScrollBar(); }
    QScrollBar *page() const { return fixture->find<QScrollArea>("mainColumn")->verticalScrollBar(); }

    std::optional<test::StandInTools> tools;
    ConsoleText *text = nullptr;
};

QTEST_MAIN(ConsoleTest)
#include "ConsoleTest.moc"
