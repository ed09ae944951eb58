// FittedDialog: its height is set anew whenever its layout asks.
#include "Varda/View/Widgets/FittedDialog.h"

#include <QEvent>
#include <QLayout>

namespace varda {

FittedDialog::FittedDialog(int width, QWidget *parent)
    : QDialog(parent)
    , m_width(width)
{
    setFixedWidth(width);
}

bool FittedDialog::event(QEvent *event)
{
    const bool handled = QDialog::event(event);
    // Polish comes before the dialog is first placed on the screen; a block of text asks anew once it knows its width.
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Polish)
        fit();
    return handled;
}

void FittedDialog::fit()
{
    if (!layout())
        return;
    const int height =
        layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(m_width) : layout()->totalSizeHint().height();
    setFixedSize(m_width, height);
    layout()->activate();
}

} // namespace varda
