// MirrorFormat: the bytes of scrcpy's video stream. Pure. All numbers are big endian.
//
// First come the codec's name in four bytes and the size of the picture: from version 4 on as a session packet (which
// is repeated when the size changes), before that as two 32-bit words. Then packets: a head of 12 bytes (64 bits of
// flags and time stamp, 32 bits of length) and so many bytes of the encoder's.
#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>

namespace varda::phone {

/// The codec's place for an audio stream that the phone does not offer; the client goes on without.
QByteArray disabledStream();

/// The phone's name in 64 bytes, NUL included, with which the first stream of a mirror begins.
QByteArray deviceNameField(const QString &name);

class MirrorFormat
{
public:
    explicit MirrorFormat(bool withSessions)
        : m_withSessions(withSessions)
    {
    }

    /// What stands before the first packet of an H.264 stream.
    QByteArray streamHead(QSize size) const;

    /// The encoder's parameter sets, which decoders need before the first picture.
    QByteArray configPacket(const QByteArray &data) const;

    QByteArray picturePacket(qint64 microseconds, bool isKey, const QByteArray &data) const;

private:
    QByteArray packet(quint64 flagsAndTime, const QByteArray &data) const;

    bool m_withSessions;
};

} // namespace varda::phone
