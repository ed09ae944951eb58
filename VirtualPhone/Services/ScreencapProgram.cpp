// ScreencapProgram: `screencap -p` writes the screen as a PNG to standard output.
#include "Services/Programs.h"

#include "Device/Screen.h"
#include "Phone.h"

#include <QBuffer>

using namespace Qt::StringLiterals;

namespace varda::phone {

void runScreencap(const Invocation &invocation)
{
    if (invocation.arguments != QStringList{u"-p"_s}) {
        invocation.channel.error("usage: screencap [-p]\n");
        return invocation.channel.exit(1);
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    paintScreen(invocation.phone.device(), invocation.phone.frame()).save(&buffer, "PNG");
    invocation.channel.output(buffer.data());
    invocation.channel.exit(0);
}

} // namespace varda::phone
