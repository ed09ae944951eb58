// Copies the C library's list of variables, whose texts may be changed or freed later.
#include "VardaCore/ChildDescription.h"

#include <unistd.h>

namespace varda {

QList<QByteArray> environmentOfThisProcess()
{
    QList<QByteArray> variables;
    for (char **variable = environ; variable && *variable; ++variable)
        variables.append(*variable);
    return variables;
}

} // namespace varda
