// ServiceRecord: written when the stream closes, whoever closes it.
#include "Services/ServiceRecord.h"

#include "Adb/Stream.h"
#include "Control/ServiceLog.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

ServiceRecord::ServiceRecord(ServiceLog &log, Stream &stream)
    : QObject(&stream)
{
    m_record = {{u"service"_s, QString::fromUtf8(stream.destination())},
                {u"stream"_s, static_cast<qint64>(stream.id())}};
    log.add(u"open"_s, m_record);
    connect(&stream, &Stream::closed, this, [this, &log, &stream] {
        m_record.insert(u"received"_s, stream.bytesReceived());
        m_record.insert(u"sent"_s, stream.bytesSent());
        log.add(u"close"_s, m_record);
    });
}

} // namespace varda::phone
