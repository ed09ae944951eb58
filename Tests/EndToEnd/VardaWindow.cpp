// VardaWindow: where the window's parts are found in its accessibility tree.
#include "VardaWindow.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

Accessible byRole(const Accessible &root, const QString &role)
{
    return root.find([&](const Accessible &candidate) { return candidate.role() == role && candidate.visible(); });
}

} // namespace

QString VardaWindow::status() const
{
    return byRole(root(), u"status bar"_s).name();
}

bool VardaWindow::statusBecomes(const QString &text) const
{
    Accessible line;
    return awaited(u"the status \""_s + text + u'"', [&] {
        if (!line.visible())
            line = byRole(root(), u"status bar"_s);
        return line.name() == text;
    });
}

Accessible VardaWindow::row(const QStringList &facts) const
{
    return root().find([&](const Accessible &candidate) {
        if (candidate.role() != u"radio button"_s)
            return false;
        const QString name = candidate.name();
        return std::ranges::all_of(facts, [&](const QString &fact) { return name.contains(fact); });
    });
}

bool VardaWindow::lists(const QStringList &facts) const
{
    return awaited(u"a device row with "_s + facts.join(u", "_s), [&] { return bool(row(facts)); });
}

bool VardaWindow::select(const QString &serial) const
{
    return awaited(u"the selection of "_s + serial, [&] {
        if (isSelected(serial))
            return true;
        row({serial}).act(u"Press"_s);
        return false;
    });
}

bool VardaWindow::isSelected(const QString &serial) const
{
    return row({serial}).states().contains(u"checked"_s);
}

bool VardaWindow::consoleBecomes(const std::function<bool(const QString &)> &condition) const
{
    const Accessible console = await(u"text"_s, u"Device console"_s);
    return awaited(u"the console's text"_s, [&] { return condition(console.text()); });
}

bool VardaWindow::answerFileDialog(const QString &path) const
{
    const QString field = u"File name:"_s;
    const auto acceptButton = [this] {
        return root().find([](const Accessible &candidate) {
            return candidate.role() == u"push button"_s && candidate.visible() &&
                   (candidate.name() == u"Open"_s || candidate.name() == u"Save"_s);
        });
    };
    return fill(field, path) && awaited(u"the file dialog to take "_s + path, [&] {
               if (!look(u"text"_s, field))
                   return true;
               const Accessible button = acceptButton();
               if (button.enabled())
                   button.act(u"Press"_s);
               return false;
           });
}

QString VardaWindow::alert() const
{
    const Accessible text = byRole(root(), u"alert"_s).find([](const Accessible &candidate) {
        return candidate.role() != u"push button"_s && candidate.role() != u"filler"_s && !candidate.name().isEmpty() &&
               candidate.name() != u"Varda"_s;
    });
    return text.name();
}

QString VardaWindow::takeAlert() const
{
    QString message;
    awaited(u"the alert"_s, [&] {
        message = alert();
        return !message.isEmpty();
    });
    if (message.isEmpty() || !press(u"OK"_s))
        return {};
    awaited(u"the alert to go"_s, [&] { return !byRole(root(), u"alert"_s); });
    return message;
}

} // namespace varda::test
