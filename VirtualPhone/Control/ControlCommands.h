// ControlCommands: the one-line commands by which a user or a test plays the phone's owner, the cable and fate.
#pragma once

#include <QString>

namespace varda::phone {

class Phone;

/// Carries out one line and returns one line: "ok", "ok VALUE" or "error: REASON". Words are quoted as in a shell.
QString executeControl(Phone &phone, const QString &line);

/// The commands and what they do, one per line.
QString controlHelp();

} // namespace varda::phone
