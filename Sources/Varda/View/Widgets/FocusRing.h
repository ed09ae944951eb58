// FocusRing: whether a widget shows that it has the focus.
#pragma once

class QWidget;

namespace varda {

/// Makes the application note whether a key or the pointer was used last. Call it when the application object exists.
void followFocusRing();

/// Whether `widget` has the focus and shows it: after a key, but not after a click, which needs no ring to say where it
/// went.
bool showsFocus(const QWidget &widget);

} // namespace varda
