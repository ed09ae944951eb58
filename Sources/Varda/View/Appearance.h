// Appearance: what the application needs before its first widget.
#pragma once

namespace varda {

/// Gives the application the style, the palette and the body font of the theme, and assistive technologies the roles of
/// our own widgets. Call it after the application object and before the first widget is made: a widget keeps the
/// accessible object that it has when something first asks for it, and setting its name does. Later calls do no harm.
void prepareAppearance();

} // namespace varda
