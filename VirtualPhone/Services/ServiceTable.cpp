// ServiceTable: names are looked up by their beginning, as a phone does.
#include "Services/ServiceTable.h"

#include "Adb/Stream.h"
#include "Mirror/MirrorServer.h"
#include "Phone.h"
#include "Services/ReverseService.h"
#include "Services/ScriptedAnswer.h"
#include "Services/ServiceRecord.h"
#include "Services/ShellService.h"
#include "Services/SyncService.h"

#include <QTimer>

#include <functional>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

/// Starts a conversation over an accepted stream; ownership is the stream's.
using Starter = std::function<void(Phone &, Stream &, ServiceRecord &)>;

/// A stream to a socket that a program on the phone listens on.
void connectToListener(Phone &phone, Stream &stream, ServiceRecord &)
{
    MirrorServer *listener = phone.listeners().value(stream.destination());
    if (listener == nullptr || !listener->take(stream))
        stream.close();
}

/// The service of that name, or nothing.
Starter findService(const QByteArray &name)
{
    if (name.startsWith("shell,") || name.startsWith("shell:") || name.startsWith("exec:"))
        return [](Phone &phone, Stream &stream, ServiceRecord &record) { new ShellService(phone, stream, record); };
    if (name.startsWith("sync:"))
        return [](Phone &phone, Stream &stream, ServiceRecord &record) { new SyncService(phone, stream, record); };
    if (name.startsWith("reverse:"))
        return answerReverse;
    if (name.startsWith("localabstract:"))
        return connectToListener;
    return {};
}

void start(Phone &phone, Stream &stream, ServiceRecord &record, const Fault &fault, const Starter &starter)
{
    if (fault.drop)
        stream.setBreakAfter(*fault.drop);
    if (!stream.isOpen())
        return;
    if (fault.replacesAnswer() && answersByScript(stream.destination()))
        new ScriptedAnswer(stream, record, fault);
    else
        starter(phone, stream, record);
}

} // namespace

bool openService(Phone &phone, Stream &stream)
{
    const Fault fault = phone.faults().forService(stream.destination());
    const Starter starter = findService(stream.destination());
    const bool serving = phone.state() == PhoneState::Device;
    if (!serving || !starter || fault.refuse) {
        phone.log().add(u"refused"_s, {{u"service"_s, QString::fromUtf8(stream.destination())}});
        return false;
    }
    auto *record = new ServiceRecord(phone.log(), stream);
    if (fault.hang) {
        record->note(u"fault"_s, u"hang"_s);
        return true;
    }
    // The service starts after this stream has been accepted, as a process on a phone would.
    QTimer::singleShot(fault.latency.value_or(phone.faults().latency), &stream,
                       [&phone, &stream, record, fault, starter] { start(phone, stream, *record, fault, starter); });
    return true;
}

} // namespace varda::phone
