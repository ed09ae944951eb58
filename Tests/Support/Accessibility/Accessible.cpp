// Accessible: libatspi's calls, with its memory rules and its errors kept inside this file.
#include "Accessibility/Accessible.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

// A loaded machine may let a program wait for the processor this long before it answers.
constexpr auto answerTimeout = 20'000ms;

// A program that answers with ever deeper children would keep a walk busy for ever.
constexpr auto deepest = 64;

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

struct Free
{
    void operator()(gpointer memory) const { g_free(memory); }
};

/// Swallows the error of a call: what went away is absent, and says so by its empty answers.
class IgnoredError
{
public:
    IgnoredError() = default;
    ~IgnoredError() { g_clear_error(&error); }
    Q_DISABLE_COPY_MOVE(IgnoredError)
    operator GError **() { return &error; }

private:
    GError *error = nullptr;
};

QString takeText(gchar *owned)
{
    const std::unique_ptr<gchar, Free> text{owned};
    return QString::fromUtf8(text.get());
}

/// Whether a walk ends here. Views of models have any number of children, and Qt's answers about cells that it has not
/// laid out are warnings; buttons and labels have none, which need not be asked.
bool isLeaf(const Accessible &object)
{
    static const QStringList leaves{u"table"_s,       u"tree table"_s, u"tree"_s,        u"list"_s,
                                    u"push button"_s, u"label"_s,      u"radio button"_s};
    return leaves.contains(object.role());
}

void joinBus()
{
    if (atspi_is_initialized())
        return;
    atspi_init();
    atspi_set_timeout(static_cast<gint>(answerTimeout.count()), static_cast<gint>(answerTimeout.count()));
}

} // namespace

Accessible::Accessible(AtspiAccessible *owned)
{
    if (owned)
        object = std::shared_ptr<AtspiAccessible>(owned, Unref{});
}

Accessible Accessible::application(qint64 pid)
{
    joinBus();
    const Accessible desktop{atspi_get_desktop(0)};
    for (const Accessible &program : desktop.children()) {
        if (atspi_accessible_get_process_id(program.object.get(), IgnoredError{}) == pid)
            return program;
    }
    return {};
}

QString Accessible::name() const
{
    return object ? takeText(atspi_accessible_get_name(object.get(), IgnoredError{})) : QString{};
}

QString Accessible::role() const
{
    if (!knownRole.isEmpty() || !object)
        return knownRole;
    const AtspiRole number = atspi_accessible_get_role(object.get(), IgnoredError{});
    // The number is the same in every version of AT-SPI; its name has been "button" since 2.56.
    if (number == ATSPI_ROLE_PUSH_BUTTON)
        knownRole = u"push button"_s;
    else if (number != ATSPI_ROLE_INVALID)
        knownRole = takeText(atspi_role_get_name(number));
    return knownRole;
}

QStringList Accessible::states() const
{
    if (!object)
        return {};
    const Owned<AtspiStateSet> set{atspi_accessible_get_state_set(object.get())};
    if (!set)
        return {};
    QStringList names;
    GArray *states = atspi_state_set_get_states(set.get());
    auto *const type = static_cast<GEnumClass *>(g_type_class_ref(ATSPI_TYPE_STATE_TYPE));
    for (guint i = 0; i < states->len; ++i) {
        if (const GEnumValue *value = g_enum_get_value(type, g_array_index(states, AtspiStateType, i)))
            names << QString::fromUtf8(value->value_nick);
    }
    g_type_class_unref(type);
    g_array_free(states, true);
    return names;
}

QString Accessible::text() const
{
    if (!object)
        return {};
    const Owned<AtspiText> text{atspi_accessible_get_text_iface(object.get())};
    if (!text)
        return {};
    const gint length = atspi_text_get_character_count(text.get(), IgnoredError{});
    return length > 0 ? takeText(atspi_text_get_text(text.get(), 0, length, IgnoredError{})) : QString{};
}

int Accessible::characterCount() const
{
    if (!object)
        return 0;
    const Owned<AtspiText> text{atspi_accessible_get_text_iface(object.get())};
    return text ? std::max(0, atspi_text_get_character_count(text.get(), IgnoredError{})) : 0;
}

QRect Accessible::extents() const
{
    if (!object)
        return {};
    const Owned<AtspiComponent> component{atspi_accessible_get_component_iface(object.get())};
    if (!component)
        return {};
    const std::unique_ptr<AtspiRect, Free> rectangle{
        atspi_component_get_extents(component.get(), ATSPI_COORD_TYPE_SCREEN, IgnoredError{})};
    return rectangle ? QRect{rectangle->x, rectangle->y, rectangle->width, rectangle->height} : QRect{};
}

QList<Accessible> Accessible::children() const
{
    if (!object)
        return {};
    QList<Accessible> all;
    const gint count = atspi_accessible_get_child_count(object.get(), IgnoredError{});
    for (gint i = 0; i < count; ++i) {
        if (const Accessible child{atspi_accessible_get_child_at_index(object.get(), i, IgnoredError{})})
            all << child;
    }
    return all;
}

bool Accessible::visible() const
{
    return states().contains(u"visible"_s);
}

bool Accessible::enabled() const
{
    return states().contains(u"enabled"_s);
}

bool Accessible::focused() const
{
    return states().contains(u"focused"_s);
}

bool Accessible::act(const QString &action) const
{
    if (!object)
        return false;
    const Owned<AtspiAction> actions{atspi_accessible_get_action_iface(object.get())};
    if (!actions)
        return false;
    const gint count = atspi_action_get_n_actions(actions.get(), IgnoredError{});
    for (gint i = 0; i < count; ++i) {
        if (takeText(atspi_action_get_action_name(actions.get(), i, IgnoredError{})) == action)
            return atspi_action_do_action(actions.get(), i, IgnoredError{});
    }
    return false;
}

bool Accessible::setText(const QString &text) const
{
    if (!object)
        return false;
    const Owned<AtspiEditableText> editable{atspi_accessible_get_editable_text_iface(object.get())};
    return editable && atspi_editable_text_set_text_contents(editable.get(), text.toUtf8().constData(), IgnoredError{});
}

bool Accessible::grabFocus() const
{
    if (!object)
        return false;
    const Owned<AtspiComponent> component{atspi_accessible_get_component_iface(object.get())};
    return component && atspi_component_grab_focus(component.get(), IgnoredError{});
}

bool Accessible::walk(const std::function<bool(const Accessible &)> &visit) const
{
    const std::function<bool(const Accessible &, int)> below = [&](const Accessible &parent, int depth) {
        for (const Accessible &child : parent.children()) {
            if (visit(child) || (depth < deepest && !isLeaf(child) && below(child, depth + 1)))
                return true;
        }
        return false;
    };
    return below(*this, 0);
}

Accessible Accessible::find(const std::function<bool(const Accessible &)> &predicate) const
{
    Accessible found;
    walk([&](const Accessible &candidate) {
        if (!predicate(candidate))
            return false;
        found = candidate;
        return true;
    });
    return found;
}

QString Accessible::tree() const
{
    QString lines;
    appendTree(lines, 0);
    return lines;
}

void Accessible::appendTree(QString &lines, int depth) const
{
    const QString ownName = name();
    const QString ownText = text();
    lines += QString(2LL * depth, u' ') + role() + u" \"" + ownName + u'"';
    if (!ownText.isEmpty() && ownText != ownName)
        lines += u" text \"" + ownText + u'"';
    lines += u" [" + states().join(u' ') + u"]\n";
    if (depth > deepest || isLeaf(*this))
        return;
    for (const Accessible &child : children())
        child.appendTree(lines, depth + 1);
}

} // namespace varda::test
