// MirrorServer: the phone's side of scrcpy: what its server does on a real phone, with this phone's painted screen.
//
// It opens a stream to the client for each of video, audio and control, in this order (or, with "tunnel_forward", waits
// until the client has opened them), sends the phone's name and the video, and plays what the client's person does.
// It ends when one of the streams ends.
#pragma once

#include "Mirror/ControlMessages.h"
#include "Mirror/MirrorFormat.h"
#include "Mirror/ServerOptions.h"
#include "Mirror/VideoEncoder.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace varda::phone {

class CommandChannel;
class Phone;
class Stream;

class MirrorServer : public QObject
{
    Q_OBJECT

public:
    /// Runs as the program behind `channel`, whose exit status tells how it ended.
    MirrorServer(Phone &phone, CommandChannel &channel, const ServerOptions &options);
    ~MirrorServer() override;
    Q_DISABLE_COPY_MOVE(MirrorServer)

    /// A stream that the client opened to this server's socket, with "tunnel_forward". False when none is missing.
    bool take(Stream &stream);

private:
    enum class Role { Video, Audio, Control };

    void connectNext();
    void adopt(Stream &stream);
    void begin(const QList<Stream *> &streams);
    void startVideo();
    void sendPicture();
    void readControl();
    void play(const ControlMessage &message);
    void playKey(const ControlMessage &message);
    void fail(const QString &reason);
    void end();

    Phone &m_phone;
    CommandChannel &m_channel;
    const ServerOptions m_options;
    const QSize m_size;
    const MirrorFormat m_format;
    QList<Role> m_roles;       // in the order in which their streams are opened
    QList<Stream *> m_streams; // those that are open, in the same order
    Stream *m_video = nullptr;
    Stream *m_control = nullptr;
    std::unique_ptr<VideoEncoder> m_encoder;
    ControlMessageReader m_messages;
    QTimer m_pictureTimer;
    QElapsedTimer m_clock;
    bool m_ended = false;
};

} // namespace varda::phone
