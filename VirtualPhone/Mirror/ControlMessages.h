// ControlMessages: what a scrcpy client sends when its person clicks and types. Pure. All numbers are big endian.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QPoint>
#include <QSize>
#include <QString>

#include <optional>

namespace varda::phone {

/// Android's numbers of what a finger or a mouse does on the screen. Higher ones are a mouse's that only hovers.
enum class MotionAction : quint8 { Down = 0, Up = 1, Move = 2 };

struct ControlMessage
{
    QString type;        ///< such as "touch", "key", "text", "scroll", "back"
    quint8 action = 0;   ///< of a touch: a `MotionAction`; of a key or Back: 0 for pressed, 1 for released
    QPoint position;     ///< of a touch or a scroll, in pixels of a screen of size `frame`
    QSize frame;         ///< the size of the video as the client knew it
    quint32 keycode = 0; ///< Android's number of a key
    QString text;
    QJsonObject details; ///< everything above that the message has, and the rest of it, for the log
};

/// Cuts the control stream into messages. A message of unknown kind has an unknown length: what follows it is lost.
class ControlMessageReader
{
public:
    void append(const QByteArray &bytes) { m_buffer += bytes; }

    /// The next complete message, or nothing when more bytes are needed or the stream is lost.
    std::optional<ControlMessage> next();

    /// The kind that was not known; nothing as long as all are.
    std::optional<quint8> unknownKind() const { return m_unknownKind; }

private:
    QByteArray m_buffer;
    std::optional<quint8> m_unknownKind;
};

} // namespace varda::phone
