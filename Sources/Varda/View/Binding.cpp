// Binding: only a text that differs is written, or the two directions would call each other for ever.
#include "Varda/View/Binding.h"

#include "Varda/View/Theme.h"

#include <QLineEdit>

namespace varda {

QLineEdit *makeField(const QString &objectName, const QString &accessibleName, const QString &placeholder,
                     QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(objectName);
    field->setAccessibleName(accessibleName);
    field->setPlaceholderText(placeholder);
    field->setAcceptDrops(false); // a build that misses its zone would be typed in as an address
    field->setFont(theme::literal(theme::font(theme::bodySize)));
    return field;
}

void bindText(QLineEdit &field, Published<QString> &property)
{
    QObject::connect(&field, &QLineEdit::textChanged, &field, [&property](const QString &text) {
        if (property() != text)
            property = text;
    });
}

void renderText(QLineEdit &field, const Published<QString> &property)
{
    if (field.text() != property())
        field.setText(property());
}

} // namespace varda
