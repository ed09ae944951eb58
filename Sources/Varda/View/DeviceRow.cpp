// DeviceRow: its size follows its font, its colours the button's state.
#include "Varda/View/DeviceRow.h"

#include "Varda/View/Widgets/FocusRing.h"
#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/PlainText.h"
#include "Varda/View/Widgets/Theme.h"

#include <QKeyEvent>
#include <QPainter>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 12;
constexpr int deviceIcon = 22;
constexpr int gap = 12;
constexpr int lineGap = 3;
constexpr int markInset = 4;
constexpr double markWidth = 3.0;

/// `serial` within `width`. A phone that adb found by itself has a long one, "adb-R58M42ABCDE-nQ8pLx._adb-tls-connect.
/// _tcp": what every such serial has, at the end and then at the start, gives way to what tells one phone from another.
QString elidedSerial(const QString &serial, const QFontMetrics &metrics, int width)
{
    const qsizetype prefix = serial.startsWith(u"adb-") ? 4 : 0;
    const qsizetype service = serial.indexOf(u"._adb", prefix);
    QString shown = serial;
    if (service > 0 && metrics.horizontalAdvance(shown) > width)
        shown = serial.left(service) + u'…';
    if (service > 0 && prefix > 0 && metrics.horizontalAdvance(shown) > width)
        shown = u'…' + shown.mid(prefix);
    return metrics.elidedText(shown, Qt::ElideMiddle, width);
}

} // namespace

DeviceRow::DeviceRow(QWidget *parent)
    : QAbstractButton(parent)
{
    setObjectName(u"deviceRow"_s);
    setCheckable(true);
    setFont(theme::font(theme::bodySize));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void DeviceRow::setDevice(const AndroidDevice &device, bool selected)
{
    setChecked(selected);
    if (device == m_device)
        return;
    m_device = device;
    const QStringList facts{device.name, device.transport(), device.id, device.state};
    setAccessibleName(visibleLine(facts.join(u", "_s)));
    setPlainToolTip(this, facts.join(u'\n'));
    update();
}

int DeviceRow::Lines::height() const
{
    return QFontMetrics(name).height() + QFontMetrics(transport).height() + QFontMetrics(serial).height() + 2 * lineGap;
}

DeviceRow::Lines DeviceRow::lines() const
{
    QFont serial = theme::relative(font(), theme::tagSize);
    serial.setFamilies(theme::monospaced(theme::tagSize).families());
    return {theme::relative(font(), theme::bodySize, QFont::DemiBold), theme::relative(font(), theme::captionSize),
            serial};
}

QSize DeviceRow::sizeHint() const
{
    return {theme::sideWidth - 2 * theme::sidePadding, lines().height() + 2 * padding};
}

QSize DeviceRow::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

void DeviceRow::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void DeviceRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool hovered = underMouse() && isEnabled();
    QColor fill = hovered ? theme::rowHover : theme::rowFill;
    if (isChecked())
        fill = hovered ? theme::rowSelectedHover : theme::rowSelected;
    if (isDown())
        fill = isChecked() ? theme::rowSelected : theme::rowFill;
    paintRounded(painter, rect(), theme::rowRadius, fill, showsFocus(*this) ? theme::accent : QColor(Qt::transparent),
                 theme::focusRing);

    const QRect inside = rect().adjusted(padding, padding, -padding, -padding);
    if (isChecked())
        paintRounded(painter, QRectF(markInset, inside.y(), markWidth, inside.height()), markWidth / 2,
                     theme::selectionMark, Qt::transparent);
    const QRectF iconArea(inside.x(), inside.y() + (inside.height() - deviceIcon) / 2.0, deviceIcon, deviceIcon);
    paintIcon(painter, m_device.emulator() ? Icon::Desktop : Icon::Phone, iconArea,
              isChecked() ? theme::accent : theme::text);
    paintTexts(painter, inside.adjusted(deviceIcon + gap, 0, 0, 0));

    // Ready is a disc, everything else a diamond: the colour alone would not tell everyone.
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_device.ready() ? theme::accent : theme::attention);
    const double size = theme::statusDot;
    const QRectF dot(inside.right() + 1 - size, inside.y() + (inside.height() - size) / 2.0, size, size);
    if (m_device.ready())
        painter.drawEllipse(dot);
    else
        painter.drawConvexPolygon(QPolygonF({{dot.center().x(), dot.top()},
                                             {dot.right(), dot.center().y()},
                                             {dot.center().x(), dot.bottom()},
                                             {dot.left(), dot.center().y()}}));
}

void DeviceRow::paintTexts(QPainter &painter, const QRect &area) const
{
    const Lines fonts = lines();
    int y = area.y() + (area.height() - fonts.height()) / 2;
    const auto line = [&](const QFont &font, const QColor &colour, const QString &text, int width) {
        const QFontMetrics metrics(font);
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(QRect(area.x(), y, width, metrics.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         metrics.elidedText(visibleLine(text), Qt::ElideRight, width));
        y += metrics.height() + lineGap;
    };
    const int besideDot = area.width() - theme::statusDot - gap;
    line(fonts.name, theme::text, m_device.name, besideDot);
    line(fonts.transport, theme::secondaryText, m_device.transport(), besideDot);
    line(fonts.serial, theme::secondaryText,
         elidedSerial(visibleLine(m_device.id), QFontMetrics(fonts.serial), area.width()), area.width());
}

} // namespace varda
