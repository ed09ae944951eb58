// The program that tests run in place of a real tool.
#pragma once

#include <QString>

namespace varda {

/// The absolute path of the stand-in program; its source tells what its arguments make it do.
QString standIn();

} // namespace varda
