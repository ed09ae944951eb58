// Appearance: the style first, because installing it polishes the palette that widgets start from.
#include "Varda/View/Appearance.h"

#include "Varda/View/Accessibility.h"
#include "Varda/View/Widgets/VardaStyle.h"

namespace varda {

void prepareAppearance()
{
    VardaStyle::install();
    installAccessibility();
}

} // namespace varda
