// Accessibility: one factory makes the interfaces; a widget that it does not know gets the one that Qt has for it.
#include "Varda/View/Accessibility.h"

#include "Varda/View/DeviceRow.h"
#include "Varda/View/ErrorAlert.h"
#include "Varda/View/StatusLine.h"
#include "Varda/View/VardaView.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Panel.h"

#include <QAccessibleWidget>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// One of the exclusive choices in the device list.
class AccessibleDeviceRow final : public QAccessibleWidget
{
public:
    explicit AccessibleDeviceRow(DeviceRow *row)
        : QAccessibleWidget(row, QAccessible::RadioButton)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = row().isChecked();
        state.focusable = row().isEnabled();
        return state;
    }

    QStringList actionNames() const override { return {pressAction()}; }

    void doAction(const QString &name) override
    {
        if (name == pressAction())
            row().click();
    }

private:
    DeviceRow &row() const { return *static_cast<DeviceRow *>(widget()); }
};

/// A text that is read, not edited.
class AccessibleTextBlock final : public QAccessibleWidget
{
public:
    explicit AccessibleTextBlock(TextBlock *block)
        : QAccessibleWidget(block, block->role())
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return static_cast<TextBlock *>(widget())->toPlainText();
        return QAccessibleWidget::text(kind);
    }

    // A screen reader has no use for the viewport and the scroll bars.
    int childCount() const override { return 0; }
    QAccessibleInterface *child(int) const override { return nullptr; }
};

/// A button that opens a page.
class AccessibleLink final : public QAccessibleWidget
{
public:
    explicit AccessibleLink(Button *button)
        : QAccessibleWidget(button, QAccessible::Link, button->text())
    {
    }

    QStringList actionNames() const override { return {pressAction()}; }

    void doAction(const QString &name) override
    {
        if (name == pressAction())
            static_cast<Button *>(widget())->click();
    }
};

QAccessibleInterface *create(const QString &className, QObject *object)
{
    // Qt's own interface of scroll areas counts only the bars that are shown, and reads past the end of its list when
    // it is asked for a child that has gone since it was counted: it takes whatever lies there for an object and
    // crashes. This interface counts all children, shown or not, and has none beyond the last.
    if (className == "QScrollArea"_L1 || className == "QAbstractScrollArea"_L1)
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Client);
    if (auto *row = qobject_cast<DeviceRow *>(object))
        return new AccessibleDeviceRow(row);
    if (auto *block = qobject_cast<TextBlock *>(object))
        return new AccessibleTextBlock(block);
    if (auto *button = qobject_cast<Button *>(object); button && button->kind() == Button::Kind::Link)
        return new AccessibleLink(button);
    if (auto *alert = qobject_cast<ErrorAlert *>(object))
        return new QAccessibleWidget(alert, QAccessible::AlertMessage);
    if (auto *spinner = qobject_cast<Spinner *>(object))
        return new QAccessibleWidget(spinner, QAccessible::ProgressBar);
    if (auto *panel = qobject_cast<Panel *>(object))
        return new QAccessibleWidget(panel, QAccessible::Grouping);
    if (auto *workspace = qobject_cast<VardaView *>(object))
        return new QAccessibleWidget(workspace, QAccessible::Window);
    return nullptr;
}

} // namespace

void installAccessibility()
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(create);
        return true;
    }();
}

} // namespace varda
