// SyncService: "sync:", by which hosts push and pull files: requests of four letters, a length (little endian) and so
// many bytes. STAT, SEND with DATA and DONE, RECV and QUIT; a LIST is always empty.
#pragma once

#include "Device/FileStore.h"

#include <QObject>

namespace varda::phone {

class Phone;
class ServiceRecord;
class Stream;

class SyncService : public QObject
{
    Q_OBJECT

public:
    SyncService(Phone &phone, Stream &stream, ServiceRecord &record);

private:
    void read();
    /// Handles one request if it is complete; false when more bytes are needed or the stream has been closed.
    bool handleNext();
    void handle(const QByteArray &request, const QByteArray &argument);
    void status(const QByteArray &path);
    void beginFile(const QByteArray &argument);
    void endFile(quint32 modified);
    void sendFile(const QByteArray &path);
    void fail(const QByteArray &reason);

    Phone &m_phone;
    Stream &m_stream;
    ServiceRecord &m_record;
    QByteArray m_buffer;
    QByteArray m_path; // of the file that is being received; empty between files
    StoredFile m_file;
};

} // namespace varda::phone
