// ToolLocation: where the tools that Varda runs lie.
#pragma once

#include <QString>

namespace varda {

/// Absolute paths below the resource directory, `../lib/varda` as seen from the program's own directory, in a build
/// tree as in an installed one. Computed afresh at each call. A missing resource directory is a broken installation and
/// ends the process; a missing tool is reported where it is used.
struct ToolLocation
{
    static QString adb();
    static QString scrcpy();
    /// The file that scrcpy sends to the phone; it lies beside scrcpy.
    static QString scrcpyServer();
};

} // namespace varda
