// MirrorServer: paints, encodes and sends by a timer; a client that is slow to read gets fewer pictures.
#include "Mirror/MirrorServer.h"

#include "Adb/Stream.h"
#include "Device/Screen.h"
#include "Phone.h"
#include "Shell/CommandChannel.h"

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::phone {

namespace {

// A phone's encoder takes its time to start, and clients rely on it: scrcpy 4.1 crashes now and then (a null format
// context) when the video begins before its recorder thread has opened the file.
constexpr auto encoderStart = 300ms;
constexpr qsizetype backlogLimit = 4096; // bytes: more than the heads, less than most pictures

// Android's numbers of keys.
constexpr quint32 keyHome = 3;
constexpr quint32 keyBack = 4;
constexpr quint32 key0 = 7;
constexpr quint32 key9 = 16;
constexpr quint32 keyA = 29;
constexpr quint32 keyZ = 54;
constexpr quint32 keySpace = 62;
constexpr quint32 keyDelete = 67;

QChar characterOf(quint32 keycode)
{
    if (keycode >= keyA && keycode <= keyZ)
        return QChar(u'a' + static_cast<char16_t>(keycode - keyA));
    if (keycode >= key0 && keycode <= key9)
        return QChar(u'0' + static_cast<char16_t>(keycode - key0));
    return keycode == keySpace ? QChar(u' ') : QChar();
}

} // namespace

MirrorServer::MirrorServer(Phone &phone, CommandChannel &channel, const ServerOptions &options)
    : QObject(&channel)
    , m_phone(phone)
    , m_channel(channel)
    , m_options(options)
    , m_size(options.videoSize(phone.device().screen()))
    , m_format(options.hasSessions())
    , m_pictureTimer(this)
{
    if (options.video)
        m_roles.append(Role::Video);
    if (options.audio)
        m_roles.append(Role::Audio);
    if (options.control)
        m_roles.append(Role::Control);
    connect(&m_pictureTimer, &QTimer::timeout, this, &MirrorServer::sendPicture);
    m_channel.output(u"[server] INFO: Device: %1 (simulated)\n"_s.arg(phone.device().model()).toUtf8());
    if (options.tunnelForward)
        m_phone.listeners().insert(options.socketName(), this);
    else
        connectNext();
}

MirrorServer::~MirrorServer()
{
    m_ended = true;
    if (m_phone.listeners().value(m_options.socketName()) == this)
        m_phone.listeners().remove(m_options.socketName());
    // Without its server, no stream of the mirror has anybody at this end.
    for (Stream *stream : std::as_const(m_streams)) {
        stream->disconnect(this);
        stream->close();
    }
}

bool MirrorServer::take(Stream &stream)
{
    if (m_ended || m_streams.size() == m_roles.size())
        return false;
    // One byte tells the client that it really reached the server: the tunnel accepts connections to nowhere, too.
    if (m_streams.isEmpty())
        stream.write(QByteArray(1, '\0'));
    adopt(stream);
    if (m_streams.size() == m_roles.size())
        begin(m_streams);
    return true;
}

void MirrorServer::connectNext()
{
    if (m_streams.size() == m_roles.size())
        return begin(m_streams);
    Stream *stream = m_phone.forwards().connectTo(m_channel.stream().connection(), m_options.socketName());
    if (stream == nullptr)
        return fail(u"cannot connect to "_s + QString::fromLatin1(m_options.socketName()));
    adopt(*stream);
    connect(stream, &Stream::opened, this, &MirrorServer::connectNext);
}

void MirrorServer::adopt(Stream &stream)
{
    m_streams.append(&stream);
    connect(&stream, &Stream::closed, this, [this, &stream] {
        m_streams.removeAll(&stream);
        end();
    });
}

void MirrorServer::begin(const QList<Stream *> &streams)
{
    if (streams.isEmpty())
        return end();
    streams.first()->write(deviceNameField(m_phone.device().model()));
    for (qsizetype index = 0; index < streams.size(); ++index) {
        Stream *stream = streams.at(index);
        switch (m_roles.at(index)) {
        case Role::Video:
            m_video = stream;
            break;
        case Role::Audio:
            stream->write(disabledStream());
            break;
        case Role::Control:
            m_control = stream;
            connect(stream, &Stream::readyRead, this, &MirrorServer::readControl);
            readControl();
            break;
        }
    }
    m_phone.log().add(u"mirror"_s, {{u"width"_s, m_size.width()}, {u"height"_s, m_size.height()}});
    if (m_video != nullptr)
        QTimer::singleShot(encoderStart, this, &MirrorServer::startVideo);
}

void MirrorServer::startVideo()
{
    if (m_ended)
        return;
    m_encoder = std::make_unique<VideoEncoder>(m_size, m_phone.options().frameRate);
    if (!m_encoder->isValid())
        return fail(u"no video encoder"_s);
    m_video->write(m_format.streamHead(m_size));
    m_video->write(m_format.configPacket(m_encoder->parameterSets()));
    m_clock.start();
    sendPicture();
    m_pictureTimer.start(1000 / m_phone.options().frameRate);
}

void MirrorServer::sendPicture()
{
    // A client that does not keep up gets fewer pictures instead of late ones.
    if (m_ended || m_video->queued() > backlogLimit)
        return;
    QImage image = paintScreen(m_phone.device(), m_phone.frame());
    if (image.size() != m_size)
        image =
            image.scaled(m_size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).convertToFormat(QImage::Format_RGB32);
    const qint64 time = m_clock.nsecsElapsed() / 1000;
    const EncodedPicture picture = m_encoder->encode(image, time);
    if (!picture.data.isEmpty())
        m_video->write(m_format.picturePacket(time, picture.isKey, picture.data));
}

void MirrorServer::readControl()
{
    m_messages.append(m_control->read());
    while (const std::optional<ControlMessage> message = m_messages.next()) {
        m_phone.log().add(u"control"_s, message->details);
        play(*message);
    }
    if (m_messages.unknownKind())
        fail(u"unknown control message %1"_s.arg(*m_messages.unknownKind()));
}

void MirrorServer::play(const ControlMessage &message)
{
    Device &device = m_phone.device();
    if (message.type == "touch"_L1 && message.frame.isValid() && !message.frame.isEmpty()) {
        if (message.action > static_cast<quint8>(MotionAction::Move))
            return; // a mouse that hovers touches nothing
        const QSize screen = device.screen();
        device.setTouch({{message.position.x() * screen.width() / message.frame.width(),
                          message.position.y() * screen.height() / message.frame.height()},
                         message.action != static_cast<quint8>(MotionAction::Up),
                         true});
    } else if (message.type == "text"_L1 ||
               (message.type == "set-clipboard"_L1 && message.details.value("paste"_L1).toBool())) {
        device.setTyped(device.typed() + message.text);
    } else if (message.type == "key"_L1 && message.action == 0) {
        playKey(message);
    } else if (message.type == "back"_L1 && message.action == 0) {
        device.goHome();
    } else if (message.type == "reset-video"_L1 && m_encoder) {
        m_encoder->requestKey();
    }
}

void MirrorServer::playKey(const ControlMessage &message)
{
    Device &device = m_phone.device();
    const QChar character = characterOf(message.keycode);
    if (message.keycode == keyHome || message.keycode == keyBack)
        device.goHome();
    else if (message.keycode == keyDelete)
        device.setTyped(device.typed().chopped(qMin<qsizetype>(1, device.typed().size())));
    else if (!character.isNull())
        device.setTyped(device.typed() + character);
}

void MirrorServer::fail(const QString &reason)
{
    if (!m_ended)
        m_channel.error("[server] ERROR: " + reason.toUtf8() + '\n');
    end();
}

void MirrorServer::end()
{
    if (std::exchange(m_ended, true))
        return;
    m_pictureTimer.stop();
    const QList<Stream *> streams = std::exchange(m_streams, {});
    for (Stream *stream : streams) {
        stream->disconnect(this);
        stream->close();
    }
    m_channel.exit(0);
}

} // namespace varda::phone
