// Accessibility: what a screen reader is told of the widgets that Qt does not know.
#pragma once

namespace varda {

/// Has device rows, text blocks, links and the alert present themselves with their own roles and states. Once per
/// process; later calls do nothing.
void installAccessibility();

} // namespace varda
