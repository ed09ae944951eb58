// X11Input: a user's hands, played by xdotool on the display of the test.
#pragma once

#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

namespace varda::test {

/// Runs xdotool and returns what it printed, trimmed. A failure is warned of and gives an empty text.
QString xdotool(const QStringList &arguments);

/// The X11 ids of the visible windows of process `pid` whose title is `title`, or of all where it is empty.
QStringList visibleWindows(qint64 pid, const QString &title = {});

/// The inner size and the position of a window, without what the window manager draws around it.
QRect windowGeometry(const QString &window);

/// How large a window is with what the window manager draws around it; empty while that is not known.
QSize sizeWithFrame(const QString &window);
QSize screenSize();

/// Makes a window the active one and waits until it is.
bool activate(const QString &window);

/// Presses and releases keys, such as "ctrl+q" or "Tab", as if on the keyboard.
void pressKeys(const QStringList &keys);
void typeText(const QString &text);

void movePointer(QPoint position);

} // namespace varda::test
