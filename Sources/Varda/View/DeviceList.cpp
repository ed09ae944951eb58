// DeviceList: a row stays for as long as its device is listed; the arrow keys select.
#include "Varda/View/DeviceList.h"

#include "Varda/View/DeviceRow.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowGap = 8;
constexpr int waitingPadding = 12;

} // namespace

DeviceList::DeviceList(VardaModel &model, QWidget *tabPredecessor, QWidget *parent)
    : QScrollArea(parent)
    , m_model(model)
    , m_tabPredecessor(tabPredecessor)
    , m_content(new QWidget)
    , m_stack(new QVBoxLayout(m_content))
    , m_waiting(makeText(u"Waiting for your phone"_s, theme::font(theme::bodySize), theme::secondaryText))
{
    setObjectName(u"deviceList"_s);
    setAccessibleName(u"Devices"_s);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Maximum);
    setWidget(m_content); // while it is empty: QScrollArea takes its present size, which is not the final one
    m_waiting->setObjectName(u"waitingText"_s);
    m_waiting->setContentsMargins(0, waitingPadding, 0, waitingPadding);
    m_stack->setContentsMargins(0, 0, 0, 0);
    m_stack->setSpacing(rowGap);
    m_stack->addWidget(m_waiting);
    viewport()->setAutoFillBackground(false);
    m_content->setAutoFillBackground(false);
}

void DeviceList::render()
{
    QList<DeviceRow *> former = m_rows;
    QList<DeviceRow *> rows;
    for (const AndroidDevice &device : m_model.devices()) {
        DeviceRow *row = takeRow(former, device.id);
        row->setDevice(device, m_model.selectedID() == device.id);
        rows.append(row);
    }
    // Not hasFocus(): the phone may go while another window is in front.
    const bool focusGoes =
        std::ranges::any_of(former, [this](DeviceRow *row) { return row == window()->focusWidget(); });
    qDeleteAll(former);
    if (rows != m_rows)
        arrange(rows);
    m_waiting->setVisible(rows.isEmpty());
    // As with radio buttons, Tab stops at the selected row, or at the first if none is.
    const auto selected = std::ranges::find_if(m_rows, &DeviceRow::isChecked);
    DeviceRow *stop = selected != m_rows.end() ? *selected : m_rows.value(0);
    for (DeviceRow *row : std::as_const(m_rows))
        row->setFocusPolicy(row == stop ? Qt::StrongFocus : Qt::ClickFocus);
    if (focusGoes && stop)
        stop->setFocus(Qt::OtherFocusReason);
}

/// The former row of the device with serial `id`, or a new one.
DeviceRow *DeviceList::takeRow(QList<DeviceRow *> &former, const QString &id)
{
    for (DeviceRow *row : former) {
        if (row->device().id == id) {
            former.removeOne(row);
            return row;
        }
    }
    auto *row = new DeviceRow(m_content);
    row->installEventFilter(this);
    QObject::connect(row, &DeviceRow::clicked, this, [this, row] { m_model.selectedID = row->device().id; });
    return row;
}

void DeviceList::arrange(const QList<DeviceRow *> &rows)
{
    m_rows = rows;
    QWidget *before = m_tabPredecessor;
    for (DeviceRow *row : m_rows) {
        m_stack->removeWidget(row);
        m_stack->addWidget(row);
        row->show();
        QWidget::setTabOrder(before, row);
        before = row;
    }
    updateGeometry();
}

QSize DeviceList::sizeHint() const
{
    return {theme::sideWidth - 2 * theme::sidePadding, m_content->sizeHint().height()};
}

QSize DeviceList::minimumSizeHint() const
{
    const QSize first = m_rows.isEmpty() ? m_waiting->sizeHint() : m_rows.first()->sizeHint();
    return {0, first.height()};
}

bool DeviceList::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn)
        ensureWidgetVisible(static_cast<QWidget *>(watched), 0, rowGap);
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool onwards = key == Qt::Key_Down || key == Qt::Key_Right;
    if (!onwards && key != Qt::Key_Up && key != Qt::Key_Left)
        return false;
    if (DeviceRow *next = m_rows.value(m_rows.indexOf(static_cast<DeviceRow *>(watched)) + (onwards ? 1 : -1))) {
        next->setFocus(Qt::OtherFocusReason);
        next->click();
    }
    return true;
}

} // namespace varda
