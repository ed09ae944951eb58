// TextFields: only a text that differs is written, or the field and the model would write to each other for ever. A
// field shows what the model has written one turn of the event loop later; what an input method commits until then is
// dropped.
#include "Varda/View/TextFields.h"

#include "Varda/View/Widgets/Theme.h"

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
    field->setFont(theme::font(theme::bodySize));
    return field;
}

void bindText(QLineEdit &field, Published<QString> &property)
{
    // A change is late if the model has replaced the text that it was made in.
    const auto take = [&property, agreed = property()](const QString &text) mutable {
        const bool late = property() != agreed;
        if (property() != text && !late)
            property = text;
        if (property() == text)
            agreed = text;
    };
    QObject::connect(&field, &QLineEdit::textChanged, &field, take);
}

void renderText(QLineEdit &field, const Published<QString> &property)
{
    if (field.text() != property())
        field.setText(property());
}

} // namespace varda
