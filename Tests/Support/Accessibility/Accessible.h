// Accessible: one object of another program's accessibility tree, as a screen reader sees it over AT-SPI.
//
// Nothing is cached but the role, which an object keeps: every other question is asked over D-Bus when it is put. An
// object that has gone (its widget was deleted, its program ended) answers almost like an absent one: empty texts, no
// state but "defunct", no children, false for every act. So a test asks and asks again until it reads what it waits
// for, and never has to catch anything.
#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

using AtspiAccessible = struct _AtspiAccessible; // NOLINT(bugprone-reserved-identifier): libatspi's own

namespace varda::test {

/// A handle that is cheap to copy. Main thread only; needs a session bus with AT-SPI on it.
class Accessible
{
public:
    /// The absent object.
    Accessible() = default;

    /// The root object of process `pid`, absent until that process has joined the accessibility bus.
    static Accessible application(qint64 pid);

    explicit operator bool() const { return object != nullptr; }

    QString name() const;
    /// AT-SPI's English name of the role: "push button", "label", "text", "password text", "dialog", "frame" …
    QString role() const;
    /// AT-SPI's names of the states that are set: "enabled", "focused", "checked", "showing" …
    QStringList states() const;
    /// What the Text interface tells, empty where the object has none.
    QString text() const;
    /// How many characters the Text interface counts, those of a masked field included; 0 where the object has none.
    int characterCount() const;
    /// Position and size on the screen in pixels; empty where the object has no Component interface.
    QRect extents() const;
    QList<Accessible> children() const;

    /// On the screen or scrolled out of view, but not hidden.
    bool visible() const;
    bool enabled() const;
    bool focused() const;

    /// Does the object's action called `action` ("Press", "SetFocus", "Toggle", …); false where it has no such action.
    bool act(const QString &action) const;
    /// Replaces the text of an editable text.
    bool setText(const QString &text) const;
    bool grabFocus() const;

    /// The first object below this one, in depth-first order, that `predicate` accepts. Items of
    /// tables, trees and lists are not looked at, nor what is below buttons and labels.
    Accessible find(const std::function<bool(const Accessible &)> &predicate) const;

    /// This object and all below it, one line each, indented: role, name, text where it differs, states.
    QString tree() const;

private:
    explicit Accessible(AtspiAccessible *owned);

    bool walk(const std::function<bool(const Accessible &)> &visit) const;
    void appendTree(QString &lines, int depth) const;

    std::shared_ptr<AtspiAccessible> object;
    mutable QString knownRole; // empty: not asked for yet
};

} // namespace varda::test
