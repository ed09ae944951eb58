// FittedDialog: sized and placed before it is on the screen, for a window manager loses its place if it is resized
// then. A layout's size constraint would make it as wide as its texts like to be, and QDialog, which guesses the height
// of the frame, places it off the middle.
#include "Varda/View/Widgets/FittedDialog.h"

#include <QEvent>
#include <QLayout>
#include <QScreen>

namespace varda {

FittedDialog::FittedDialog(int width, QWidget *parent)
    : QDialog(parent)
    , m_width(width)
{
    setFixedWidth(width);
}

void FittedDialog::ensureBuilt()
{
    if (!layout())
        build();
}

void FittedDialog::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        ensureBuilt();
        layout()->activate(); // or layouts inside it answer for a text that stands no longer
        fit();
        centre();
    }
    QDialog::setVisible(visible);
}

bool FittedDialog::event(QEvent *event)
{
    const bool handled = QDialog::event(event);
    if (event->type() == QEvent::LayoutRequest && isVisible()) // it is fitted when it is shown
        fit();
    return handled;
}

void FittedDialog::fit()
{
    const bool wraps = layout()->hasHeightForWidth();
    setFixedSize(m_width, wraps ? layout()->totalHeightForWidth(m_width) : layout()->totalSizeHint().height());
}

/// Both windows have the same frame, so that the inner parts have one middle, too.
void FittedDialog::centre()
{
    if (!parentWidget())
        return;
    const QWidget *below = parentWidget()->window();
    const QPoint frame = below->geometry().topLeft() - below->frameGeometry().topLeft();
    const QRect room = below->screen()->availableGeometry().adjusted(frame.x(), frame.y(), -frame.x(), -frame.x());
    QRect place(QPoint(0, 0), size());
    place.moveCenter(below->geometry().center());
    place.moveBottomRight({qMin(place.right(), room.right()), qMin(place.bottom(), room.bottom())});
    place.moveTopLeft({qMax(place.left(), room.left()), qMax(place.top(), room.top())});
    setGeometry(place);
}

} // namespace varda
