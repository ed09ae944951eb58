// ProgramArguments: what `varda` understands when it is started from a terminal. There are no settings, so that is
// little.
#pragma once

#include <QString>

#include <optional>

namespace varda {

struct ProgramArguments
{
    /// What to print where the arguments ask for the help or the version instead of the window. Needs no display. Qt's
    /// own options may stand among the arguments; anything else that is unknown is passed over.
    static std::optional<QString> answer(int argc, char **argv);

    /// A sentence about the first argument that neither Varda nor Qt knows. To be asked while the application object
    /// exists: it has taken Qt's own options out.
    static std::optional<QString> mistake();
};

} // namespace varda
