// ProgramArguments: what `varda` understands when it is started: a build to open, and the usual two options.
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace varda {

struct ProgramArguments
{
    /// What to print if the arguments ask for the help or the version instead of the window. Needs no display. Qt's own
    /// options may stand among the arguments; anything else that is unknown is passed over.
    static std::optional<QString> infoText(int argc, char **argv);

    // The application object has taken Qt's own options out of the arguments; ask the following while it exists.

    /// A sentence about the first argument that neither Varda nor Qt knows.
    static std::optional<QString> parseError();

    /// The file that was given, as an absolute local location, whether it exists or not.
    static std::optional<QUrl> file();
};

} // namespace varda
