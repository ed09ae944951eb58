// TextFields: text fields that show and write a property of the model.
#pragma once

#include "Varda/Model/Published.h"

#include <QString>

class QLineEdit;
class QWidget;

namespace varda {

/// A field with a frame; `accessibleName` is what a screen reader calls it.
QLineEdit *makeField(const QString &objectName, const QString &accessibleName, const QString &placeholder,
                     QWidget *parent);

/// Writes to `property` whatever is typed, pasted or set in `field`, unless the model has written it since the two last
/// agreed: then the field is about to be rendered anew. Both live as long as the window.
void bindText(QLineEdit &field, Published<QString> &property);

/// Shows `property` in `field`, which keeps cursor and selection where the text is the same.
void renderText(QLineEdit &field, const Published<QString> &property);

} // namespace varda
