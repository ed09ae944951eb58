// WindowDriver: looking, waiting and acting, on top of Accessible.
#include "Accessibility/WindowDriver.h"

#include <QDebug>

#include <algorithm>
#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

const auto buttonRole = u"push button"_s;

bool runs(qint64 pid)
{
    return kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

} // namespace

WindowDriver::WindowDriver(qint64 process)
    : pid{process}
{
}

const Accessible &WindowDriver::root() const
{
    if (!program)
        program = Accessible::application(pid);
    return program;
}

bool WindowDriver::opens()
{
    return awaited(u"a window of process %1"_s.arg(pid), [this] {
        for (const Accessible &window : root().children()) {
            if (window.visible())
                return true;
        }
        return false;
    });
}

Accessible WindowDriver::look(const QString &role, const QString &name) const
{
    const auto fits = [&](const Accessible &candidate) {
        return candidate.role() == role && candidate.name() == name && candidate.visible();
    };
    Accessible &found = seen[role + u'/' + name];
    if (!fits(found))
        found = root().find(fits);
    return found;
}

Accessible WindowDriver::await(const QString &role, const QString &name) const
{
    Accessible found;
    awaited(role + u" \"" + name + u'"', [&] {
        found = look(role, name);
        return bool(found);
    });
    return found;
}

bool WindowDriver::press(const QString &button) const
{
    return awaited(u"press of \""_s + button + u'"', [&] {
        const Accessible found = look(buttonRole, button);
        return found && found.enabled() && found.act(u"Press"_s);
    });
}

bool WindowDriver::fill(const QString &field, const QString &text) const
{
    return awaited(u"field \""_s + field + u'"', [&] {
        return std::ranges::any_of(QStringList{u"text"_s, u"password text"_s},
                                   [&](const QString &role) { return look(role, field).setText(text); });
    });
}

Accessible WindowDriver::showing(const QString &words) const
{
    return root().find([&](const Accessible &candidate) {
        return (candidate.name().contains(words) || candidate.text().contains(words)) && candidate.visible();
    });
}

bool WindowDriver::shows(const QString &words) const
{
    return awaited(u"the text \""_s + words + u'"', [&] { return bool(showing(words)); });
}

bool WindowDriver::hides(const QString &words) const
{
    return awaited(u"the text \""_s + words + u"\" to go", [&] { return !showing(words); });
}

bool WindowDriver::buttonBecomes(const QString &button, bool enabled) const
{
    return awaited(u"button \""_s + button + (enabled ? u"\" enabled"_s : u"\" disabled"_s), [&] {
        const Accessible found = look(buttonRole, button);
        return found && found.enabled() == enabled;
    });
}

QString WindowDriver::tree() const
{
    return root().tree();
}

bool WindowDriver::awaited(const QString &what, const std::function<bool()> &condition) const
{
    bool held = false;
    // A program that has ended shows nothing more: whoever waits for it shall not wait out the guard time.
    eventually([&] { return (held = condition()) || !runs(pid); });
    if (!held)
        qWarning().noquote() << u"Waited in vain for "_s + what +
                                    (runs(pid) ? u"; the window's tree:\n" + tree() : u", for the program has ended"_s);
    return held;
}

} // namespace varda::test
