// ServiceLog: what hosts asked of the phone and how it ended, as JSON objects: one per line in a file, and the latest
// in memory. Every record has "time" (milliseconds since the phone started) and "event".
#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QJsonObject>
#include <QList>

namespace varda::phone {

class ServiceLog
{
public:
    /// Writes to the file at `path` as well; an empty path means memory only. False when the file cannot be written.
    bool open(const QString &path);

    void add(const QString &event, QJsonObject record);

    /// The latest records, oldest first: 10,000 at most.
    QList<QJsonObject> records() const { return m_records; }

private:
    QElapsedTimer m_clock;
    QFile m_file;
    QList<QJsonObject> m_records;
};

} // namespace varda::phone
