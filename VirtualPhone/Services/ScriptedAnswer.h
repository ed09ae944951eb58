// ScriptedAnswer: a command's answer as a fault rule states it, in place of the program's own.
#pragma once

#include "Control/Faults.h"

#include <QObject>

namespace varda::phone {

class CommandChannel;
class ServiceRecord;
class Stream;

/// Whether `service` is a command that a rule can answer. An install is not: it reads its file first (see `Install`).
bool answersByScript(const QByteArray &service);

class ScriptedAnswer : public QObject
{
    Q_OBJECT

public:
    ScriptedAnswer(Stream &stream, ServiceRecord &record, const Fault &fault);

private:
    /// Sends the next piece of a flood when the last one has gone, so that a flood of any size needs little memory.
    void flood();
    void finish();

    CommandChannel *m_channel;
    ServiceRecord &m_record;
    const Fault m_fault;
    qint64 m_remaining = 0;
};

} // namespace varda::phone
