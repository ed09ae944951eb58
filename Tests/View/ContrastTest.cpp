// Contrast as the Web Content Accessibility Guidelines 2.1 ask for it: 4.5 : 1 for texts, 3 : 1 for what shows where a
// control is and in which state.
#include "Support/ViewFixture.h"
#include "Varda/View/DeviceRow.h"
#include "Varda/View/Widgets/Theme.h"

#include <QScrollArea>
#include <QScrollBar>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// Scrolls the main column until `widget`, where it stands in there, is near its top.
void bringIntoSight(const ViewFixture &fixture, const QWidget *widget)
{
    auto *column = fixture.find<QScrollArea>("mainColumn");
    if (column->widget()->isAncestorOf(widget))
        column->verticalScrollBar()->setValue(widget->mapTo(column->widget(), QPoint(0, -100)).y());
}

/// `colour` as it looks on the opaque `ground`.
QColor over(const QColor &colour, const QColor &ground)
{
    const double a = colour.alphaF();
    const auto mix = [a](double top, double bottom) { return static_cast<float>(top * a + bottom * (1 - a)); };
    return QColor::fromRgbF(mix(colour.redF(), ground.redF()), mix(colour.greenF(), ground.greenF()),
                            mix(colour.blueF(), ground.blueF()));
}

/// Relative luminance, as the Web Content Accessibility Guidelines 2.1 define it.
double luminance(const QColor &colour)
{
    const auto linear = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &text, const QColor &ground)
{
    const double a = luminance(over(text, ground));
    const double b = luminance(ground);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

/// The greatest contrast of a pixel within `area` to the pixel at the same place of `other`.
double greatestContrast(const QImage &picture, const QImage &other, const QRect &area)
{
    double greatest = 1;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            greatest = qMax(greatest, contrast(picture.pixelColor(x, y), other.pixelColor(x, y)));
    }
    return greatest;
}

QImage filled(const QImage &like, const QColor &colour)
{
    QImage image = like;
    image.fill(colour);
    return image;
}

} // namespace

class ContrastTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void isLegible_data()
    {
        QTest::addColumn<QColor>("text");
        QTest::addColumn<QColor>("ground");
        const auto panel = over(theme::panelFill, theme::mainBackground);
        QTest::newRow("text") << theme::text << panel;
        QTest::newRow("secondary, side") << theme::secondaryText << theme::sideBackground;
        QTest::newRow("secondary, main") << theme::secondaryText << theme::mainBackground;
        QTest::newRow("secondary, panel") << theme::secondaryText << panel;
        QTest::newRow("secondary, selected row")
            << theme::secondaryText << over(theme::rowSelectedHover, theme::sideBackground);
        QTest::newRow("placeholder") << theme::placeholderText << theme::fieldBackground;
        QTest::newRow("accent") << theme::accent << panel;
        QTest::newRow("orange") << theme::attention << panel;
        QTest::newRow("warning") << theme::text << over(theme::faded(theme::attention, 0.14), theme::mainBackground);
        QTest::newRow("hint") << theme::text << over(theme::hintFill, theme::mainBackground);
        QTest::newRow("console") << theme::consoleText << theme::consoleBackground;
        QTest::newRow("primary button") << theme::textOnAccent << theme::accent;
        QTest::newRow("primary button, hover") << theme::textOnAccent << theme::accentHover;
        QTest::newRow("primary button, pressed") << theme::textOnAccent << theme::accentPressed;
        QTest::newRow("secondary button, hover") << theme::text << over(theme::controlHover, panel);
        QTest::newRow("selected text") << QColor(Qt::white) << theme::selection;
        QTest::newRow("tooltip") << theme::text << theme::popupBackground;
    }
    void isLegible()
    {
        QFETCH(QColor, text);
        QFETCH(QColor, ground);
        const double ratio = contrast(text, ground);
        QVERIFY2(ratio >= 4.5, qPrintable(u"contrast is %1"_s.arg(ratio)));
    }

    void outlinesWhatCanBeUsed_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : {"packageField", "pairingEndpointField", "chooseButton", "wirelessButton", "logsButton",
                                 "doneButton", "dropZone"})
            QTest::newRow(name) << QByteArray(name);
    }
    void outlinesWhatCanBeUsed()
    {
        QFETCH(QByteArray, name);
        fixture->attach(readyPhone);
        fixture->model->wireless = name == "doneButton" || name == "pairingEndpointField";
        fixture->show();
        const QWidget *widget = fixture->find(name.constData());
        QTRY_VERIFY(widget->isVisible());
        bringIntoSight(*fixture, widget);
        fixture->find(fixture->model->wireless() ? "pairingCodeField" : "mainColumn")->setFocus();
        const QImage picture = widget->window()->grab().toImage();
        const QRect place(widget->mapTo(widget->window(), QPoint(0, 0)), widget->size());
        // The upper edge, clear of its round corners, and the ground above it; inside the drop zone the ground is the
        // same.
        const QRect edge(place.left() + place.width() / 4, place.top(), place.width() / 2, 1);
        const QColor ground = picture.pixelColor(edge.center() - QPoint(0, 3));
        const double ratio = greatestContrast(picture, filled(picture, ground), edge);
        QVERIFY2(ratio >= 3, qPrintable(u"contrast is %1"_s.arg(ratio)));
    }

    void showsTheScrollThumb_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : {"mainColumn", "deviceList", "consoleText"})
            QTest::newRow(name) << QByteArray(name);
    }
    void showsTheScrollThumb()
    {
        QFETCH(QByteArray, name);
        fixture->model->devices = QList<AndroidDevice>(11, readyPhone);
        fixture->model->logs = u"a line\n"_s.repeated(350);
        fixture->show();
        auto *area = fixture->find<QAbstractScrollArea>(name.constData());
        bringIntoSight(*fixture, area);
        const auto *bar = area->verticalScrollBar();
        QVERIFY(bar->isVisible() && bar->maximum() > 0);
        const QImage picture = fixture->view->grab().toImage();
        const QRect place(bar->mapTo(fixture->view.get(), QPoint(0, 0)), bar->size());
        const QColor ground = picture.pixelColor(place.left(), place.center().y());
        const double ratio = greatestContrast(picture, filled(picture, ground), place);
        QVERIFY2(ratio >= 3, qPrintable(u"contrast is %1"_s.arg(ratio)));
    }

    void tellsTheSelectedRow()
    {
        fixture->attach(readyPhone);
        fixture->show();
        auto *row = fixture->find<DeviceRow>("deviceRow");
        const QImage selected = row->grab().toImage();
        row->setDevice(readyPhone, false);
        const double ratio = greatestContrast(selected, row->grab().toImage(), row->rect());
        QVERIFY2(ratio >= 3, qPrintable(u"contrast is %1"_s.arg(ratio)));
    }
};

QTEST_MAIN(ContrastTest)
#include "ContrastTest.moc"
