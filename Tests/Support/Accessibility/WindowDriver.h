// WindowDriver: works another program's windows the way a screen-reader user does, by role and name.
//
// Everything a user would wait for is waited for: a control to appear, to be enabled, a text to be shown. While it
// waits, the caller's event loop turns. A wait that runs out answers false and prints the tree as it was then, so that
// a failed test shows what the window showed.
#pragma once

#include "Accessibility/Accessible.h"
#include "Support/Wait.h"

#include <QHash>
#include <QString>

#include <functional>

namespace varda::test {

/// Drives the process `pid`, which may not have opened a window yet. Main thread only.
class WindowDriver
{
public:
    explicit WindowDriver(qint64 pid);

    /// Waits until the program shows a window.
    bool opens();

    /// The visible object of this role and name, or absent; looks once and does not wait. As long as the one that was
    /// found last time fits, it is that one.
    Accessible look(const QString &role, const QString &name) const;
    /// Waits for the visible object of this role and name.
    Accessible await(const QString &role, const QString &name) const;

    /// Waits until the button is there and enabled, then presses it.
    bool press(const QString &button) const;
    /// Waits until the field is there, then replaces its text. Works on masked fields too.
    bool fill(const QString &field, const QString &text) const;

    /// Waits until some visible object's name or text contains `words`.
    bool shows(const QString &words) const;
    /// Waits until no visible object's name or text contains `words`.
    bool hides(const QString &words) const;
    /// Waits until the button is there and enabled, or there and disabled.
    bool buttonBecomes(const QString &button, bool enabled) const;

    /// The first visible object whose name or text contains `words`; looks once.
    Accessible showing(const QString &words) const;

    /// The whole tree as indented text.
    QString tree() const;

protected:
    /// Waits until `condition` holds or the program has ended; where it does not hold, says that `what` was waited for,
    /// and prints the tree.
    bool awaited(const QString &what, const std::function<bool()> &condition) const;
    /// The program itself, absent until it was first seen on the accessibility bus.
    const Accessible &root() const;

private:
    qint64 pid;
    mutable Accessible program;
    mutable QHash<QString, Accessible> seen; // by role and name: a walk through the tree takes 0.1 s
};

} // namespace varda::test
