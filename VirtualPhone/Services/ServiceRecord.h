// ServiceRecord: one service's two records in the log: "open" when it starts and "close" when its stream ends, with the
// bytes that passed and whatever the service noted about its outcome.
#pragma once

#include <QJsonObject>
#include <QObject>

namespace varda::phone {

class ServiceLog;
class Stream;

class ServiceRecord : public QObject
{
    Q_OBJECT

public:
    ServiceRecord(ServiceLog &log, Stream &stream);

    /// Adds a member to the record of the end.
    void note(const QString &key, const QJsonValue &value) { m_record.insert(key, value); }

private:
    QJsonObject m_record;
};

} // namespace varda::phone
