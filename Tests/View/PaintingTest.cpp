// What takes long is done once, and as Qt would have done it.
#include "Varda/View/Widgets/Painting.h"
#include "Support/ViewFixture.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QDir>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>

#include <dlfcn.h>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

int shapings = 0;

/// How many threads of Qt's own pool this program has.
qsizetype pooledThreads()
{
    const QDir threads(u"/proc/self/task"_s);
    return std::ranges::count_if(threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot), [&](const QString &thread) {
        QFile name(threads.filePath(thread + u"/comm"_s));
        return name.open(QIODevice::ReadOnly) && name.readAll().startsWith("Thread (pooled");
    });
}

QImage shape(double scale, const std::function<void(QPainter &)> &paint)
{
    QImage image(QSize(400, 300) * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(theme::mainBackground);
    QPainter painter(&image);
    paint(painter);
    return image;
}

/// The most by which a colour of a pixel differs.
int difference(const QImage &left, const QImage &right)
{
    int most = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const QRgb a = left.pixel(x, y);
            const QRgb b = right.pixel(x, y);
            most = std::max(
                {most, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return most;
}

} // namespace

/// Stands before the function of this name, which Qt calls once for each piece of text that it shapes.
extern "C" int hb_shape_full(void *font, void *buffer, const void *features, unsigned count, const char *const *shapers)
{
    ++shapings;
    static const auto shape = reinterpret_cast<decltype(&hb_shape_full)>(::dlsym(RTLD_NEXT, "hb_shape_full"));
    return shape(font, buffer, features, count, shapers);
}

class PaintingTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    /// First, for what other tests paint may start the pool.
    void paintsTheWindowOnItsOwnThread()
    {
        fixture->view->grab();
        QCOMPARE(pooledThreads(), 0);
    }

    /// And once more for each time that it is drawn. Titles only: smaller text is set without shaping.
    void shapesATextOnceToMeasureIt()
    {
        const QFont font = theme::font(theme::title2Size);
        const std::unique_ptr<QLabel> label(makeText(u"One line of text"_s, font, theme::text));
        Button button(Button::Kind::Secondary, u"Choose APK"_s);
        button.setFont(font);
        const int before = shapings;
        for (const int width : {300, 400, 500})
            QVERIFY(qAbs(label->heightForWidth(width) - label->fontMetrics().height()) <= 1);
        QCOMPARE(shapings - before, 1);
        QCOMPARE(button.sizeHint(), button.minimumSizeHint());
        QCOMPARE(shapings - before, 2);
    }

    void shapesNoTextThatIsNoTitle()
    {
        const int before = shapings;
        QLabel label(u"64 x86"_s);
        label.grab();
        label.setFont(theme::font(theme::captionSize, QFont::Bold));
        label.grab();
        QCOMPARE(shapings - before, 0);
        label.setFont(theme::font(theme::title2Size));
        label.grab();
        QVERIFY(shapings > before);
    }

    void roundsCornersAsQtDoes_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("width");
        for (const double scale : {1.0, 1.5, 2.0}) {
            for (const double radius : {0.0, 6.5, 16.0})
                QTest::addRow("%g times, radius %g", scale, radius) << scale << radius << 1.0;
            QTest::addRow("%g times, with a wide line", scale) << scale << 9.0 << 2.0;
            QTest::addRow("%g times, with a line between pixels", scale) << scale << 9.0 << 1.5;
        }
    }

    void roundsCornersAsQtDoes()
    {
        QFETCH(double, scale);
        QFETCH(double, radius);
        QFETCH(double, width);
        const QRectF place(20, 10, 360, 280);
        const QImage painted = shape(scale, [&](QPainter &painter) {
            paintRounded(painter, place, radius, theme::panelFill, theme::controlLine, width);
        });
        const QImage expected = shape(scale, [&](QPainter &painter) {
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(Qt::NoPen);
            painter.setBrush(theme::panelFill);
            painter.drawRoundedRect(place, radius, radius);
            const double inset = width / 2;
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(theme::controlLine, width));
            painter.drawRoundedRect(place.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
        });
        const int most = difference(painted, expected);
        QVERIFY2(most <= 4, qPrintable(QString::number(most)));
    }

    void drawsIconsAsTheirFilesSay_data()
    {
        QTest::addColumn<Icon>("icon");
        QTest::newRow("product") << Icon::Product; // lines
        QTest::newRow("warning") << Icon::Warning; // a shape with holes
        QTest::newRow("record") << Icon::Record;   // both
        QTest::newRow("varda") << Icon::Varda;     // gradients
    }
    void drawsIconsAsTheirFilesSay()
    {
        QFETCH(Icon, icon);
        const auto onWhite = [](const std::function<void(QPainter &)> &paint) {
            QImage image(48, 48, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            paint(painter);
            return image;
        };
        const QImage painted = onWhite([&](QPainter &painter) {
            if (icon == Icon::Varda)
                applicationIcon().paint(&painter, painter.window());
            else
                paintIcon(painter, icon, painter.window(), Qt::black);
        });
        const QImage expected = onWhite([](QPainter &painter) {
            const QString name = QString::fromUtf8(QTest::currentDataTag());
            QSvgRenderer(QStringLiteral(VARDA_ICONS "/%1.svg").arg(name)).render(&painter);
        });
        const int most = difference(painted, expected);
        QVERIFY2(most <= 4, qPrintable(QString::number(most)));
    }
};

QTEST_MAIN(PaintingTest)
#include "PaintingTest.moc"
