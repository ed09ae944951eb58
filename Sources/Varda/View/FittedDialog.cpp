// FittedDialog: sized and placed before it is on the screen, for a window manager loses its place if it is resized then.
#include "Varda/View/FittedDialog.h"

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

void FittedDialog::setVisible(bool visible)
{
    if (visible && !isVisible()) {
        fit();
        centre();
    }
    QDialog::setVisible(visible);
}

bool FittedDialog::event(QEvent *event)
{
    const bool handled = QDialog::event(event);
    if (event->type() == QEvent::LayoutRequest)
        fit();
    return handled;
}

void FittedDialog::fit()
{
    const bool wraps = layout()->hasHeightForWidth();
    setFixedSize(m_width, wraps ? layout()->totalHeightForWidth(m_width) : layout()->totalSizeHint().height());
}

/// Its own frame is not known yet: the window manager draws the parent's the same.
void FittedDialog::centre()
{
    if (!parentWidget())
        return;
    const QWidget *below = parentWidget()->window();
    const QRect frame = below->frameGeometry();
    QRect place(QPoint(0, 0), size() + frame.size() - below->size());
    place.moveCenter(frame.center());
    const QRect screen = below->screen()->availableGeometry();
    move(qBound(screen.left(), place.left(), qMax(screen.left(), screen.right() + 1 - place.width())),
         qBound(screen.top(), place.top(), qMax(screen.top(), screen.bottom() + 1 - place.height())));
}

} // namespace varda
