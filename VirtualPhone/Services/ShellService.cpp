// ShellService: the commands of a line one after the other; the last exit status is that of the line.
#include "Services/ShellService.h"

#include "Adb/Stream.h"
#include "Phone.h"
#include "Services/Programs.h"
#include "Services/ServiceRecord.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr int exitSyntaxError = 1;
constexpr int exitNotFound = 127;

} // namespace

ShellProtocol shellProtocolOf(const QByteArray &service)
{
    const QList<QByteArray> options = service.left(service.indexOf(':')).split(',');
    return options.first() == "shell" && options.contains("v2") ? ShellProtocol::Packets : ShellProtocol::Raw;
}

QByteArray commandLineOf(const QByteArray &service)
{
    return service.mid(service.indexOf(':') + 1);
}

bool isInstall(const QByteArray &service)
{
    const ShellScript script = parseShell(QString::fromUtf8(commandLineOf(service)));
    const QStringList words = script.commands.isEmpty() ? QStringList() : script.commands.first().words;
    return words.mid(0, 3) == QStringList{u"cmd"_s, u"package"_s, u"install"_s} ||
           words.mid(0, 2) == QStringList{u"pm"_s, u"install"_s};
}

ShellService::ShellService(Phone &phone, Stream &stream, ServiceRecord &record)
    : QObject(&stream)
    , m_phone(phone)
    , m_record(record)
    , m_channel(new CommandChannel(stream, shellProtocolOf(stream.destination())))
    , m_script(parseShell(QString::fromUtf8(commandLineOf(stream.destination()))))
{
    // Queued: a program may end within its start.
    connect(m_channel, &CommandChannel::exited, this, &ShellService::runNext, Qt::QueuedConnection);
    if (!m_script.error.isEmpty()) {
        m_channel->error("/system/bin/sh: syntax error: " + m_script.error.toUtf8() + '\n');
        finish(exitSyntaxError);
        return;
    }
    if (m_script.commands.isEmpty()) {
        m_channel->error("/system/bin/sh: this phone has no interactive shell\n");
        finish(exitSyntaxError);
        return;
    }
    runNext(0);
}

void ShellService::runNext(int lastCode)
{
    if (m_script.commands.isEmpty())
        return finish(lastCode);
    ShellCommand command = m_script.commands.takeFirst();
    if (command.words.value(0) == "exec"_L1) {
        command.words.removeFirst();
        m_script.commands.clear();
    }
    if (command.words.value(0) == "export"_L1) {
        for (const QString &word : command.words.mid(1))
            m_environment.insert(word.section(u'=', 0, 0), word.section(u'=', 1));
        return runNext(0);
    }
    if (command.words.isEmpty()) {
        m_environment.insert(command.assignments);
        return runNext(0);
    }
    const QString name = command.words.takeFirst();
    const Program program = findProgram(name);
    if (program == nullptr) {
        m_channel->error("/system/bin/sh: " + name.toUtf8() + ": inaccessible or not found\n");
        return runNext(exitNotFound);
    }
    QMap<QString, QString> environment = m_environment;
    environment.insert(command.assignments);
    program({command.words, environment, *m_channel, m_phone, m_record});
}

void ShellService::finish(int code)
{
    m_record.note(u"exit"_s, code);
    m_record.note(u"outputSha256"_s, QString::fromLatin1(m_channel->outputDigest().toHex()));
    m_channel->finish(code);
}

} // namespace varda::phone
