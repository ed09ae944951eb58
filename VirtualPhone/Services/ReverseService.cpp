// ReverseService: one request, one answer; then the stream is closed.
#include "Services/ReverseService.h"

#include "Adb/Stream.h"
#include "Phone.h"
#include "Services/ServiceRecord.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

/// Text after its length as four hexadecimal digits.
QByteArray counted(const QByteArray &text)
{
    return QByteArray::number(text.size(), 16).rightJustified(4, '0') + text;
}

QByteArray okay()
{
    return "OKAY";
}
QByteArray fail(const QByteArray &reason)
{
    return "FAIL" + counted(reason);
}

QByteArray forward(Phone &phone, Connection &connection, QByteArray request)
{
    const QByteArray norebind = "norebind:";
    const bool mayReplace = !request.startsWith(norebind);
    if (!mayReplace)
        request.remove(0, norebind.size());
    const QList<QByteArray> ends = request.split(';');
    if (ends.size() != 2 || ends.first().isEmpty() || ends.last().isEmpty())
        return fail("bad forward: " + request);
    if (!phone.forwards().add(connection, ends.first(), ends.last(), mayReplace))
        return fail("cannot rebind existing socket");
    return okay();
}

QByteArray answer(Phone &phone, Connection &connection, const QByteArray &request)
{
    const QByteArray forwardPrefix = "forward:";
    const QByteArray killPrefix = "killforward:";
    if (request.startsWith(forwardPrefix))
        return forward(phone, connection, request.mid(forwardPrefix.size()));
    if (request == "killforward-all") {
        phone.forwards().forget(connection);
        return okay();
    }
    if (request.startsWith(killPrefix)) {
        const QByteArray device = request.mid(killPrefix.size());
        return phone.forwards().remove(connection, device) ? okay() : fail("listener '" + device + "' not found");
    }
    if (request == "list-forward") {
        QByteArray lines;
        const QMap<QByteArray, QByteArray> forwards = phone.forwards().list(connection);
        for (auto entry = forwards.begin(); entry != forwards.end(); ++entry)
            lines += "(reverse) " + entry.key() + ' ' + entry.value() + '\n';
        return counted(lines); // alone among the answers, the list has no OKAY before it
    }
    return fail("unknown reverse command: " + request);
}

} // namespace

void answerReverse(Phone &phone, Stream &stream, ServiceRecord &record)
{
    const QByteArray reply =
        answer(phone, stream.connection(), stream.destination().mid(QByteArray("reverse:").size()));
    record.note(u"outcome"_s, QString::fromUtf8(reply));
    stream.write(reply);
    stream.finish();
}

} // namespace varda::phone
