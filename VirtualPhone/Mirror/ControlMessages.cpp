// ControlMessages: a message of unknown kind ends the conversation, for nobody knows how long it is.
#include "Mirror/ControlMessages.h"

#include <QtEndian>

#include <array>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

/// Reads numbers one after the other. Reading beyond the end gives zeros and is remembered.
class Cursor
{
public:
    explicit Cursor(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    template <typename Number>
    Number number()
    {
        const QByteArray bytes = take(sizeof(Number));
        return bytes.isEmpty() ? Number(0) : qFromBigEndian<Number>(bytes.constData());
    }

    QByteArray take(qsizetype size)
    {
        if (m_missing || m_position + size > m_bytes.size()) {
            m_missing = true;
            return {};
        }
        QByteArray bytes = m_bytes.mid(m_position, size);
        m_position += size;
        return bytes;
    }

    bool missing() const { return m_missing; }
    qsizetype position() const { return m_position; }

private:
    const QByteArray &m_bytes;
    qsizetype m_position = 0;
    bool m_missing = false;
};

void readPosition(Cursor &cursor, ControlMessage &message)
{
    const auto left = cursor.number<qint32>();
    const auto top = cursor.number<qint32>();
    const auto width = cursor.number<quint16>();
    const auto height = cursor.number<quint16>();
    message.position = {left, top};
    message.frame = {width, height};
    message.details.insert(u"x"_s, left);
    message.details.insert(u"y"_s, top);
    message.details.insert(u"width"_s, width);
    message.details.insert(u"height"_s, height);
}

void readAction(Cursor &cursor, ControlMessage &message)
{
    message.action = cursor.number<quint8>();
    message.details.insert(u"action"_s, message.action);
}

void readKey(Cursor &cursor, ControlMessage &message)
{
    readAction(cursor, message);
    message.keycode = cursor.number<quint32>();
    message.details.insert(u"keycode"_s, static_cast<qint64>(message.keycode));
    message.details.insert(u"repeat"_s, static_cast<qint64>(cursor.number<quint32>()));
    message.details.insert(u"meta"_s, static_cast<qint64>(cursor.number<quint32>()));
}

void readText(Cursor &cursor, ControlMessage &message)
{
    message.text = QString::fromUtf8(cursor.take(cursor.number<quint32>()));
    message.details.insert(u"text"_s, message.text);
}

void readTouch(Cursor &cursor, ControlMessage &message)
{
    readAction(cursor, message);
    message.details.insert(u"pointer"_s, cursor.number<qint64>());
    readPosition(cursor, message);
    message.details.insert(u"pressure"_s, cursor.number<quint16>());
    message.details.insert(u"actionButton"_s, static_cast<qint64>(cursor.number<quint32>()));
    message.details.insert(u"buttons"_s, static_cast<qint64>(cursor.number<quint32>()));
}

void readScroll(Cursor &cursor, ControlMessage &message)
{
    readPosition(cursor, message);
    message.details.insert(u"horizontal"_s, cursor.number<qint16>());
    message.details.insert(u"vertical"_s, cursor.number<qint16>());
    message.details.insert(u"buttons"_s, static_cast<qint64>(cursor.number<quint32>()));
}

void readClipboard(Cursor &cursor, ControlMessage &message)
{
    message.details.insert(u"sequence"_s, cursor.number<qint64>());
    message.details.insert(u"paste"_s, cursor.number<quint8>() != 0);
    readText(cursor, message);
}

void readHidDevice(Cursor &cursor, ControlMessage &message)
{
    message.details.insert(u"id"_s, cursor.number<quint16>());
    message.details.insert(u"vendor"_s, cursor.number<quint16>());
    message.details.insert(u"product"_s, cursor.number<quint16>());
    message.details.insert(u"name"_s, QString::fromUtf8(cursor.take(cursor.number<quint8>())));
    cursor.take(cursor.number<quint16>());
}

void readHidInput(Cursor &cursor, ControlMessage &message)
{
    message.details.insert(u"id"_s, cursor.number<quint16>());
    message.details.insert(u"data"_s, QString::fromLatin1(cursor.take(cursor.number<quint16>()).toHex()));
}

void readHidEnd(Cursor &cursor, ControlMessage &message)
{
    message.details.insert(u"id"_s, cursor.number<quint16>());
}

void readApp(Cursor &cursor, ControlMessage &message)
{
    message.text = QString::fromUtf8(cursor.take(cursor.number<quint8>()));
    message.details.insert(u"text"_s, message.text);
}

void readSize(Cursor &cursor, ControlMessage &message)
{
    message.details.insert(u"width"_s, cursor.number<quint16>());
    message.details.insert(u"height"_s, cursor.number<quint16>());
}

void readNothing(Cursor &, ControlMessage &) {}

struct Kind
{
    const char *name;
    void (*read)(Cursor &, ControlMessage &);
};

/// In the order of the kinds' numbers.
constexpr std::array kinds = {
    Kind{"key", readKey},
    Kind{"text", readText},
    Kind{"touch", readTouch},
    Kind{"scroll", readScroll},
    Kind{"back", readAction},
    Kind{"expand-notifications", readNothing},
    Kind{"expand-settings", readNothing},
    Kind{"collapse-panels", readNothing},
    Kind{"get-clipboard", readAction},
    Kind{"set-clipboard", readClipboard},
    Kind{"display-power", readAction},
    Kind{"rotate", readNothing},
    Kind{"hid-create", readHidDevice},
    Kind{"hid-input", readHidInput},
    Kind{"hid-destroy", readHidEnd},
    Kind{"keyboard-settings", readNothing},
    Kind{"start-app", readApp},
    Kind{"reset-video", readNothing},
    Kind{"torch", readAction},
    Kind{"zoom-in", readNothing},
    Kind{"zoom-out", readNothing},
    Kind{"resize-display", readSize},
};

} // namespace

std::optional<ControlMessage> ControlMessageReader::next()
{
    if (m_unknownKind || m_buffer.isEmpty())
        return std::nullopt;
    Cursor cursor(m_buffer);
    const auto number = cursor.number<quint8>();
    if (number >= kinds.size()) {
        m_unknownKind = number;
        m_buffer.clear();
        return std::nullopt;
    }
    ControlMessage message;
    message.type = QString::fromLatin1(kinds.at(number).name);
    message.details.insert(u"type"_s, message.type);
    kinds.at(number).read(cursor, message);
    if (cursor.missing())
        return std::nullopt;
    m_buffer.remove(0, cursor.position());
    return message;
}

} // namespace varda::phone
