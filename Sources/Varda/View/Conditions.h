// Conditions: what the controls' states are derived from, computed anew on every render.
#pragma once

#include "Varda/Model/VardaModel.h"

namespace varda {

/// A device is selected, attached, and takes commands.
inline bool isReady(const VardaModel &model)
{
    const auto selected = model.selected();
    return selected && selected->ready();
}

/// Ready, and no action is in flight.
inline bool takesActions(const VardaModel &model)
{
    return isReady(model) && !model.busy();
}

} // namespace varda
