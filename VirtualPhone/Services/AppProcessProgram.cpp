// AppProcessProgram: `app_process DIRECTORY CLASS …` runs a Java class: here only scrcpy's server, which the phone
// plays.
#include "Services/Programs.h"

#include "Mirror/MirrorServer.h"
#include "Phone.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

void runAppProcess(const Invocation &invocation)
{
    const QString className = invocation.arguments.value(1);
    const QByteArray path = invocation.environment.value(u"CLASSPATH"_s).toUtf8();
    const bool isKnown =
        className == "com.genymobile.scrcpy.Server"_L1 && invocation.phone.device().files().contains(path);
    if (!isKnown) {
        invocation.channel.error("Error: could not find or load class " + className.toUtf8() + "\nAborted\n");
        return invocation.channel.exit(134);
    }
    const ServerOptions options = parseServerOptions(invocation.arguments.mid(2));
    if (!options.error.isEmpty()) {
        invocation.channel.error("[server] ERROR: " + options.error.toUtf8() + '\n');
        return invocation.channel.exit(1);
    }
    new MirrorServer(invocation.phone, invocation.channel, options);
}

} // namespace varda::phone
