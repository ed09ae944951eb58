// Sizes and colours that are fixed, and texts of any length, any character and any font that must not upset them.
#include "Support/ViewFixture.h"
#include "Varda/View/AboutPane.h"
#include "Varda/View/DeviceRow.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/PlainText.h"
#include "Varda/View/Widgets/Theme.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

#include <array>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// Every visible widget below `window` that would rather be larger than it is, and so is clipped.
QStringList clipped(const QWidget &window)
{
    QStringList found;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->window() != &window)
            continue;
        const QString name = QString::fromLatin1(widget->metaObject()->className()) + u' ' + widget->objectName();
        if (qobject_cast<const QAbstractButton *>(widget) && !qobject_cast<const DeviceRow *>(widget)) {
            if (widget->width() < widget->sizeHint().width() || widget->height() < widget->sizeHint().height())
                found << name;
        } else if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            const int wanted = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
            const bool elides = qobject_cast<const ElidedLabel *>(label);
            // A text that wraps has to have room for its longest word.
            const int narrowest = label->wordWrap()
                                      ? label->fontMetrics().size(0, label->text().replace(u' ', u'\n')).width() +
                                            label->width() - label->contentsRect().width()
                                      : label->minimumSizeHint().width();
            if (label->height() < wanted || (!elides && label->width() < narrowest))
                found << name;
        } else if (qobject_cast<const DeviceRow *>(widget) || qobject_cast<const QLineEdit *>(widget)) {
            if (widget->height() < widget->sizeHint().height())
                found << name;
        }
    }
    return found;
}

void enlargeFonts(QWidget &window, double factor)
{
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        QFont font = widget->font();
        if (font.pixelSize() > 0) {
            font.setPixelSize(qRound(font.pixelSize() * factor));
            widget->setFont(font);
        }
    }
}

void publishLongTexts(VardaModel &model)
{
    const AndroidDevice service{u"adb-"_s + u"R58M42ABCDE-"_s.repeated(16) + u"._adb-tls-connect._tcp"_s, u"device"_s,
                                QString(200, u'W')};
    model.devices = QList<AndroidDevice>{service, shyPhone};
    model.selectedID = service.id;
    model.apk = QUrl::fromLocalFile(u"/tmp/"_s + QString(250, u'm') + u".apk"_s);
    model.status = u"Installing "_s + QString(250, u'm') + u".apk…\nand a line\nand another"_s;
    model.logs = QString(4000, u'x');
    model.packageName = QString(500, u'p');
}

} // namespace

class LayoutTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void hasItsMeasures()
    {
        QCOMPARE(fixture->view->size(), QSize(1180, 820));
        QCOMPARE(fixture->view->minimumSize(), QSize(980, 700));
        fixture->show();
        QCOMPARE(fixture->find("sideColumn")->width(), 272);
        QCOMPARE(fixture->find("consoleText")->height(), 220);
        const QWidget *column = fixture->find("mainColumn");
        const QWidget *panel = fixture->find("deployPanel");
        QCOMPARE(panel->mapTo(column, QPoint(0, 0)).x(), 30);
        QCOMPARE(panel->width(), column->width() - 60);
        QCOMPARE(fixture->find("dropZone")->mapTo(panel, QPoint(0, 0)).x(), 20);
        const QWidget *live = fixture->find("livePhonePanel");
        QCOMPARE(live->y() - panel->geometry().bottom() - 1, 22);
        const int status = fixture->find("statusText")->mapTo(column, QPoint(TextBlock::inset, 0)).x();
        QCOMPARE(status, 30); // the text, not its ring

        fixture->view->resize(400, 300);
        QCOMPARE(fixture->view->size(), QSize(980, 700));
        QCOMPARE(fixture->find("sideColumn")->width(), 272);
    }

    void isDark()
    {
        fixture->show();
        const QImage picture = fixture->view->grab().toImage();
        QCOMPARE(picture.pixelColor(6, 400), QColor(14, 19, 31));
        QCOMPARE(picture.pixelColor(290, 8), QColor(19, 24, 38));
        QCOMPARE(theme::accent, QColor(66, 217, 207));
    }

    void scrollsTheMainColumnVerticallyOnly()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        auto *column = fixture->find<QScrollArea>("mainColumn");
        QVERIFY(column->verticalScrollBar()->maximum() > 0);
        QCOMPARE(column->horizontalScrollBar()->maximum(), 0);
    }

    void keepsTheStatusInSight()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        fixture->settle();
        auto *column = fixture->find<QScrollArea>("mainColumn");
        const QWidget *status = fixture->find("statusLine");
        const QRect sight = column->viewport()->rect();
        QCOMPARE(status->geometry().bottom(), sight.bottom());

        column->verticalScrollBar()->setValue(column->verticalScrollBar()->maximum());
        const auto below = [&](const char *upper, const QWidget *lower) {
            const QWidget *widget = fixture->find(upper);
            const QPoint bottom = widget->mapTo(column, QPoint(0, widget->height()));
            return lower->mapTo(column, QPoint(0, 0)).y() >= bottom.y();
        };
        const QWidget *text = fixture->find("statusText");
        QVERIFY(below("consoleFooter", text)); // under the console, above the note
        QVERIFY(fixture->find("setupNote")->mapTo(column, QPoint(0, 0)).y() >=
                text->mapTo(column, QPoint(0, text->height())).y());
    }

    void linesTheFloatingStatusAsWideAsThePanels()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        fixture->settle();
        const QWidget *status = fixture->find("statusLine");
        const QImage picture = fixture->view->grab().toImage();
        const QPoint corner = status->mapTo(fixture->view.get(), QPoint(0, 0));
        const QWidget *panel = fixture->find("deployPanel");
        const int left = panel->mapTo(fixture->view.get(), QPoint(0, 0)).x();
        const auto lined = [&](int x) { return picture.pixelColor(x, corner.y()) != theme::mainBackground; };
        QVERIFY(lined(left) && lined(left + panel->width() / 2) && lined(left + panel->width() - 1));
        QVERIFY(!lined(left - 1) && !lined(left + panel->width()));
    }

    void scrollsALongStatusInside()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        auto *column = fixture->find<QScrollArea>("mainColumn");
        const auto *text = fixture->find<TextBlock>("statusText");
        const auto turnWheel = [text] {
            const QPointF middle = text->viewport()->rect().center();
            QWheelEvent turn(middle, text->viewport()->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                             Qt::NoScrollPhase, false);
            QSpontaneKeyEvent::setSpontaneous(&turn); // Qt passes on nothing that a program made up
            qApp->notify(text->viewport(), &turn);
        };
        turnWheel(); // a short one scrolls the page
        QVERIFY(column->verticalScrollBar()->value() > 0);
        column->verticalScrollBar()->setValue(0);

        fixture->model->status = u"adb: the listing failed. "_s.repeated(120);
        fixture->settle();
        const QWidget *status = fixture->find("statusLine");
        QCOMPARE(status->geometry().bottom(), column->viewport()->rect().bottom());
        QVERIFY(status->height() <= column->height() / 3);
        const int page = text->verticalScrollBar()->pageStep();
        QVERIFY(text->verticalScrollBar()->maximum() > 0);
        QCOMPARE(page % text->fontMetrics().lineSpacing(), 2 * TextBlock::inset); // no half line
        turnWheel();
        QVERIFY(text->verticalScrollBar()->value() > 0);
        QCOMPARE(column->verticalScrollBar()->value(), 0);

        // In its place under the console it is as high.
        const int height = status->height();
        column->verticalScrollBar()->setValue(column->verticalScrollBar()->maximum());
        QCOMPARE(status->height(), height);
        QVERIFY(status->geometry().bottom() < column->viewport()->rect().bottom());
    }

    void neverWidensForLongTexts()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        publishLongTexts(*fixture->model);
        fixture->model->wireless = true;
        fixture->settle();
        QTRY_VERIFY(fixture->find("wirelessSheet")->isVisible());
        fixture->settle();
        QCOMPARE(fixture->view->size(), QSize(980, 700));
        QCOMPARE(fixture->find("sideColumn")->width(), 272);
        const auto *column = fixture->find<QScrollArea>("mainColumn");
        QCOMPARE(column->widget()->width(), column->viewport()->width());
        QCOMPARE(fixture->find("deployPanel")->width(), column->width() - 60);
        QCOMPARE(fixture->find("wirelessSheet")->width(), 560);
        QVERIFY(fixture->find("deviceTransport")->isVisible());
        QCOMPARE(clipped(*fixture->view).join(u", "_s), QString());
    }

    void holdsWholeTextsInTooltips()
    {
        publishLongTexts(*fixture->model);
        fixture->settle();
        const auto *row = fixture->find<DeviceRow>("deviceRow");
        QVERIFY(row->toolTip().contains(QString(200, u'W')));
        QVERIFY(row->toolTip().contains(fixture->model->selectedID().value_or(QString())));
        QVERIFY(fixture->find("deviceName")->toolTip().contains(QString(200, u'W')));
        QVERIFY(fixture->find("apkName")->toolTip().contains(u"/tmp/mmm"));
        // The status is whole where it stands.
        const auto *status = fixture->find<TextBlock>("statusText");
        QVERIFY(status->toPlainText().contains(QString(250, u'm')));
    }

    void clipsNothing_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("factor");
        QTest::newRow("first size") << QSize(1180, 820) << 1.0;
        QTest::newRow("smallest") << QSize(980, 700) << 1.0;
        QTest::newRow("larger font") << QSize(1180, 820) << 1.3;
        QTest::newRow("smallest, larger font") << QSize(980, 700) << 1.3;
    }
    void clipsNothing()
    {
        QFETCH(QSize, size);
        QFETCH(double, factor);
        fixture->view->resize(size);
        fixture->list({shyPhone, readyPhone}, shyPhone.id);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->wireless = true;
        fixture->show();
        if (factor > 1.0)
            enlargeFonts(*fixture->view, factor);
        fixture->settle();
        QCOMPARE(clipped(*fixture->view).join(u", "_s), QString());
        QTRY_COMPARE(clipped(*fixture->find("wirelessSheet")).join(u", "_s), QString());
        QCOMPARE(fixture->find("sideColumn")->width(), 272);
        const auto *column = fixture->find<QScrollArea>("mainColumn");
        QVERIFY(column->widget()->width() <= column->viewport()->width());

        AboutPane about;
        about.present();
        QVERIFY(QTest::qWaitForWindowExposed(&about));
        if (factor > 1.0)
            enlargeFonts(about, factor);
        fixture->settle();
        QTRY_COMPARE(clipped(about).join(u", "_s), QString());
    }

    void givesAWrappingTextTheHeightOfALabel()
    {
        const QString words = u"as many words as it takes to fill several lines of a narrow column "_s.repeated(3);
        const QFont font = theme::font(theme::bodySize);
        const std::unique_ptr<QLabel> text(makeText(words, font, theme::text));
        QCOMPARE(text->sizeHint().width(), 0); // a good one would be sought by setting the text over and over
        QLabel label(words);
        label.setWordWrap(true);
        label.setFont(font);
        const auto compare = [&] {
            for (int width = 100; width < 1000; width += 50)
                QCOMPARE(text->heightForWidth(width), label.heightForWidth(width));
            // Once more: what it remembers is what it found.
            for (int width = 950; width >= 100; width -= 50)
                QCOMPARE(text->heightForWidth(width), label.heightForWidth(width));
        };
        compare();
        const std::array<std::function<void(QLabel &)>, 3> changes{
            [&](QLabel &each) { each.setText(words + words); },
            [](QLabel &each) { each.setFont(theme::font(theme::heroSize)); },
            [](QLabel &each) { each.setContentsMargins(40, 12, 0, 12); },
        };
        for (const auto &change : changes) {
            const int before = text->heightForWidth(300);
            change(*text);
            change(label);
            QVERIFY(label.heightForWidth(300) != before);
            QCOMPARE(text->heightForWidth(300), label.heightForWidth(300));
            compare();
        }
    }

    void listsMoreDevicesThanFit()
    {
        fixture->view->resize(980, 700);
        QList<AndroidDevice> many;
        for (int i = 0; i < 40; ++i)
            many << AndroidDevice{u"SERIAL%1"_s.arg(i), u"device"_s, u"Phone %1"_s.arg(i)};
        fixture->model->devices = many;
        fixture->show();
        QCOMPARE(fixture->view->size(), QSize(980, 700));
        const auto *list = fixture->find<QScrollArea>("deviceList");
        QVERIFY(list->verticalScrollBar()->maximum() > 0);
        const QWidget *side = fixture->find("sideColumn");
        for (const char *name : {"wirelessButton", "trustText"}) {
            const QWidget *widget = fixture->find(name);
            QVERIFY(side->rect().contains(QRect(widget->mapTo(side, QPoint(0, 0)), widget->size())));
            QVERIFY(!list->geometry().intersects(widget->geometry()));
        }
    }

    void showsHostileTextsAsTheyAre()
    {
        const AndroidDevice hostile{u"<i>serial</i>"_s, u"device"_s, u"<b>x</b><img src=\"file:///etc/passwd\">"_s};
        fixture->attach(hostile);
        fixture->model->status = u"<h1>done</h1>"_s;
        fixture->model->error = u"<a href=\"https://example.com\">click</a>"_s;
        fixture->model->logs = u"<script>"_s;
        fixture->settle();
        auto *name = fixture->find<QLabel>("deviceName");
        QCOMPARE(name->text(), hostile.name);
        for (const auto *label : fixture->view->findChildren<QLabel *>())
            QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(fixture->find<TextBlock>("statusText")->toPlainText(), u"<h1>done</h1>"_s);
        QCOMPARE(fixture->find<TextBlock>("alertText")->toPlainText(), u"<a href=\"https://example.com\">click</a>"_s);
        QVERIFY(fixture->find("deviceRow")->accessibleName().contains(u"<b>x</b>"));

        AndroidDevice reversed = readyPhone;
        reversed.name = u"Pixel\u202Eydaer\u0007\n"_s;
        fixture->attach(reversed);
        QCOMPARE(name->text(), u"Pixel[U+202E]ydaer␇␊"_s);
    }

    void showsTooltipsLiterally()
    {
        AndroidDevice hostile = readyPhone;
        hostile.name = u"<b>x</b> & <img src=y>"_s;
        fixture->attach(hostile);
        const QWidget *row = fixture->find("deviceRow");
        // Mark-up in the tip is this program's own and wraps it; what came from the phone is escaped.
        QVERIFY(Qt::mightBeRichText(row->toolTip()));
        QVERIFY(row->toolTip().contains(hostile.name.toHtmlEscaped()));
        QVERIFY(!row->toolTip().contains(u"<b>"));
        QVERIFY(row->accessibleDescription().contains(hostile.name));
    }

    void makesHiddenCharactersVisible_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("lines");
        QTest::newRow("ordinary") << u"Pixel 8 – Größe 😀 שלום"_s << u"Pixel 8 – Größe 😀 שלום"_s
                                  << u"Pixel 8 – Größe 😀 שלום"_s;
        QTest::newRow("line ends") << u"a\r\nb\nc"_s << u"a␍␊b␊c"_s << u"a\nb\nc"_s;
        QTest::newRow("tab") << u"a\tb"_s << u"a␉b"_s << u"a\tb"_s;
        QTest::newRow("escape") << u"\u001b[31mred"_s << u"␛[31mred"_s << u"␛[31mred"_s;
        QTest::newRow("nul") << QString(QChar(u'\0')) << u"␀"_s << u"␀"_s;
        QTest::newRow("delete and C1") << u"\u007f\u0085\u009b"_s << u"␡[U+0085][U+009B]"_s << u"␡[U+0085][U+009B]"_s;
        QTest::newRow("overrides") << u"\u202d\u202e\u2066\u2069\u200f\u061c"_s
                                   << u"[U+202D][U+202E][U+2066][U+2069][U+200F][U+061C]"_s
                                   << u"[U+202D][U+202E][U+2066][U+2069][U+200F][U+061C]"_s;
    }
    void makesHiddenCharactersVisible()
    {
        QFETCH(QString, text);
        QFETCH(QString, line);
        QFETCH(QString, lines);
        QCOMPARE(visibleLine(text), line);
        QCOMPARE(visibleLines(text), lines);
    }
};

QTEST_MAIN(LayoutTest)
#include "LayoutTest.moc"
