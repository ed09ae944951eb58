// ServiceLog: every record is flushed at once, for whoever reads the file while the phone runs.
#include "Control/ServiceLog.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr qsizetype recordLimit = 10'000;

}

bool ServiceLog::open(const QString &path)
{
    m_clock.start();
    if (path.isEmpty())
        return true;
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}

void ServiceLog::add(const QString &event, QJsonObject record)
{
    record.insert(u"event"_s, event);
    record.insert(u"time"_s, m_clock.elapsed());
    if (m_file.isOpen()) {
        m_file.write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
        m_file.flush();
    }
    if (m_records.size() >= recordLimit)
        m_records.removeFirst();
    m_records.append(record);
}

} // namespace varda::phone
