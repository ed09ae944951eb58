// The build tells where the program is.
#include "Support/StandIn.h"

namespace varda {

QString standIn()
{
    return QStringLiteral(VARDA_STAND_IN);
}

} // namespace varda
