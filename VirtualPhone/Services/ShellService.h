// ShellService: "shell:", "shell,v2,…:" and "exec:": runs a command line, program after program.
#pragma once

#include "Shell/CommandChannel.h"
#include "Shell/ShellSyntax.h"

#include <QObject>

namespace varda::phone {

class Phone;
class ServiceRecord;
class Stream;

/// What a program gets when it is started. It writes to the channel and calls its `exit` once, at once or later;
/// whatever it leaves behind until then is a child object of the channel.
struct Invocation
{
    QStringList arguments; ///< without the program's name
    QMap<QString, QString> environment;
    CommandChannel &channel;
    Phone &phone;
    ServiceRecord &record;
};

using Program = void (*)(const Invocation &);

/// The shell protocol if the service's options ask for it: "shell,v2,TERM=xterm,raw:ls".
ShellProtocol shellProtocolOf(const QByteArray &service);
/// What follows the service's options: "ls" in "shell,v2,TERM=xterm,raw:ls".
QByteArray commandLineOf(const QByteArray &service);
/// Whether `service` streams a file to the package manager.
bool isInstall(const QByteArray &service);

class ShellService : public QObject
{
    Q_OBJECT

public:
    ShellService(Phone &phone, Stream &stream, ServiceRecord &record);

private:
    void runNext(int lastCode);
    void finish(int code);

    Phone &m_phone;
    ServiceRecord &m_record;
    CommandChannel *m_channel;
    ShellScript m_script;
    QMap<QString, QString> m_environment;
};

} // namespace varda::phone
