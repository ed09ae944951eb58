// SyncService: works off complete requests, however they are cut into packets.
#include "Services/SyncService.h"

#include "Adb/Stream.h"
#include "Phone.h"
#include "Services/ServiceRecord.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr qsizetype headerSize = 8;
constexpr quint32 maxRequestSize = 64 * 1024; // of a path as of a piece of data
constexpr quint32 permissionBits = 0777;

QByteArray word(quint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray message(const char *id, const QByteArray &content)
{
    return id + word(static_cast<quint32>(content.size())) + content;
}

} // namespace

SyncService::SyncService(Phone &phone, Stream &stream, ServiceRecord &record)
    : QObject(&stream)
    , m_phone(phone)
    , m_stream(stream)
    , m_record(record)
{
    connect(&stream, &Stream::readyRead, this, &SyncService::read);
    read();
}

void SyncService::read()
{
    m_buffer += m_stream.read();
    while (handleNext()) {
    }
}

bool SyncService::handleNext()
{
    if (!m_stream.isOpen() || m_buffer.size() < headerSize)
        return false;
    const QByteArray request = m_buffer.left(4);
    const auto length = qFromLittleEndian<quint32>(m_buffer.constData() + 4);
    if (request == "DONE") { // its second word is a time, not a length
        m_buffer.remove(0, headerSize);
        endFile(length);
        return true;
    }
    if (length > maxRequestSize) {
        fail("request too long");
        m_stream.finish();
        return false;
    }
    if (m_buffer.size() < headerSize + static_cast<qsizetype>(length))
        return false;
    const QByteArray argument = m_buffer.mid(headerSize, static_cast<qsizetype>(length));
    m_buffer.remove(0, headerSize + static_cast<qsizetype>(length));
    handle(request, argument);
    return true;
}

void SyncService::handle(const QByteArray &request, const QByteArray &argument)
{
    if (request == "STAT")
        return status(argument);
    if (request == "SEND")
        return beginFile(argument);
    if (request == "DATA") {
        if (!m_path.isEmpty())
            m_file.content += argument;
        return;
    }
    if (request == "RECV")
        return sendFile(argument);
    if (request == "LIST")
        return m_stream.write("DONE" + QByteArray(16, '\0'));
    if (request == "QUIT")
        return m_stream.finish();
    fail("unknown request");
    m_stream.finish();
}

void SyncService::status(const QByteArray &path)
{
    const StoredFile file = m_phone.device().files().file(path).value_or(StoredFile{0, 0, {}});
    const quint32 mode = FileStore::isDirectory(path) ? directoryMode : file.mode;
    m_stream.write("STAT" + word(mode) + word(static_cast<quint32>(file.content.size())) + word(file.modified));
}

void SyncService::beginFile(const QByteArray &argument)
{
    const qsizetype comma = argument.lastIndexOf(',');
    m_path = argument.left(comma);
    const quint32 permissions = argument.mid(comma + 1).toUInt() & permissionBits;
    m_file = {regularFileMode | permissions, 0, {}};
}

void SyncService::endFile(quint32 modified)
{
    const QByteArray path = std::exchange(m_path, {});
    if (path.isEmpty() || FileStore::isDirectory(path))
        return fail("couldn't create file: " + path);
    m_file.modified = modified;
    m_record.note(u"path"_s, QString::fromUtf8(path));
    m_record.note(u"size"_s, m_file.content.size());
    const QByteArray digest = QCryptographicHash::hash(m_file.content, QCryptographicHash::Sha256).toHex();
    m_record.note(u"sha256"_s, QString::fromLatin1(digest));
    m_phone.device().files().write(path, std::exchange(m_file, {}));
    m_stream.write(message("OKAY", {}));
}

void SyncService::sendFile(const QByteArray &path)
{
    const std::optional<StoredFile> file = m_phone.device().files().file(path);
    if (!file)
        return fail("failed to open file: No such file or directory");
    for (qsizetype start = 0; start < file->content.size(); start += maxRequestSize)
        m_stream.write(message("DATA", file->content.mid(start, maxRequestSize)));
    m_stream.write("DONE" + word(0));
}

void SyncService::fail(const QByteArray &reason)
{
    m_stream.write(message("FAIL", reason));
}

} // namespace varda::phone
