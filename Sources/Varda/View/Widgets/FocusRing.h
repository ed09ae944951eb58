// FocusRing: whether a widget shows that it has the focus.
#pragma once

class QWidget;

namespace varda {

/// Has the application follow which of keyboard and pointer was used last. Call it after the application object is made.
void followFocusRing();

/// Whether `widget` has the focus and shows it: after a key, but not after a click, which needs no ring to say where it
/// went.
bool showsFocus(const QWidget &widget);

} // namespace varda
