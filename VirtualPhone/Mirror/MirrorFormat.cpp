// MirrorFormat: versions differ in the head of the stream and in the bits of the flags.
#include "Mirror/MirrorFormat.h"

#include <QtEndian>

namespace varda::phone {

namespace {

constexpr qsizetype deviceNameSize = 64;
constexpr int highestBit = 63; // the flags stand in the highest bits of the time stamp
constexpr quint32 sessionFlag = quint32(1) << 31;

template <typename Number>
QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof(Number), Qt::Uninitialized);
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray sizeWords(QSize size)
{
    return bigEndian(static_cast<quint32>(size.width())) + bigEndian(static_cast<quint32>(size.height()));
}

} // namespace

QByteArray disabledStream()
{
    return bigEndian(quint32(0));
}

QByteArray deviceNameField(const QString &name)
{
    return name.toUtf8().left(deviceNameSize - 1).leftJustified(deviceNameSize, '\0');
}

QByteArray MirrorFormat::streamHead(QSize size) const
{
    const QByteArray session = m_withSessions ? bigEndian(sessionFlag) : QByteArray();
    return "h264" + session + sizeWords(size);
}

QByteArray MirrorFormat::configPacket(const QByteArray &data) const
{
    // Sessions took the highest bit from the configuration's.
    return packet(quint64(1) << (m_withSessions ? highestBit - 1 : highestBit), data);
}

QByteArray MirrorFormat::picturePacket(qint64 microseconds, bool isKey, const QByteArray &data) const
{
    const quint64 keyFlag = quint64(1) << (m_withSessions ? highestBit - 2 : highestBit - 1);
    return packet(static_cast<quint64>(microseconds) | (isKey ? keyFlag : 0), data);
}

QByteArray MirrorFormat::packet(quint64 flagsAndTime, const QByteArray &data) const
{
    return bigEndian(flagsAndTime) + bigEndian(static_cast<quint32>(data.size())) + data;
}

} // namespace varda::phone
