// ScriptedAnswer: a flood is sent piece by piece, as fast as the host reads it.
#include "Services/ScriptedAnswer.h"

#include "Adb/Stream.h"
#include "Services/ServiceRecord.h"
#include "Services/ShellService.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr qint64 floodPiece = 64LL * 1024;
constexpr qsizetype fillerLine = 64;

/// Stray continuation bytes, a sequence cut short, an overlong form, a surrogate, a value beyond Unicode, and NUL.
constexpr char garbage[] = "\x80\xbf ok \xe2\x82 \xc0\xaf \xed\xa0\x80 \xf4\x90\x80\x80 \xff\xfe \0 end\n";

} // namespace

bool answersByScript(const QByteArray &service)
{
    const bool command = service.startsWith("shell") || service.startsWith("exec:");
    return command && !isInstall(service);
}

ScriptedAnswer::ScriptedAnswer(Stream &stream, ServiceRecord &record, const Fault &fault)
    : QObject(&stream)
    , m_channel(new CommandChannel(stream, shellProtocolOf(stream.destination())))
    , m_record(record)
    , m_fault(fault)
    , m_remaining(fault.flood.value_or(0))
{
    m_channel->error(fault.error.value_or(QByteArray()));
    m_channel->output(fault.output.value_or(QByteArray()));
    if (fault.garble)
        m_channel->output(QByteArray(garbage, sizeof(garbage) - 1));
    connect(&stream, &Stream::drained, this, &ScriptedAnswer::flood);
    flood();
}

void ScriptedAnswer::flood()
{
    if (m_remaining <= 0)
        return finish();
    static const QByteArray piece = QByteArray(fillerLine - 1, 'x').append('\n').repeated(floodPiece / fillerLine);
    const qint64 size = qMin(m_remaining, floodPiece);
    m_remaining -= size;
    m_channel->output(piece.left(size));
}

void ScriptedAnswer::finish()
{
    disconnect(&m_channel->stream(), &Stream::drained, this, nullptr);
    const int code = m_fault.exitCode.value_or(0);
    m_record.note(u"fault"_s, u"answer"_s);
    m_record.note(u"exit"_s, code);
    m_record.note(u"outputSha256"_s, QString::fromLatin1(m_channel->outputDigest().toHex()));
    m_channel->finish(code);
}

} // namespace varda::phone
