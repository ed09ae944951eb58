// ButtonPainting: size and look of every push button, those of file dialogs included, for VardaStyle.
#pragma once

#include <QSize>

class QPainter;
class QStyleOptionButton;
class QWidget;

namespace varda {

QSize buttonSize(const QStyleOptionButton &option, const QWidget *widget);

/// Ground, focus ring, icon and text, for the state that `option` says.
void paintButton(const QStyleOptionButton &option, QPainter &painter, const QWidget *widget);

} // namespace varda
