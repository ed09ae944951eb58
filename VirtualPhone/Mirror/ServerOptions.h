// ServerOptions: the command line of scrcpy's server. Pure.
//
//   CLASSPATH=/data/local/tmp/scrcpy-server.jar app_process / com.genymobile.scrcpy.Server 4.1 scid=1a2b3c4d
//   max_size=1920
#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QStringList>

namespace varda::phone {

struct ServerOptions
{
    QString version; ///< of the client; the server must be of the same one
    QByteArray scid; ///< tells apart the servers of several clients; empty for none
    QString videoCodec = QStringLiteral("h264");
    int maxSize = 0;   ///< of the longer side, in pixels; 0 means unlimited
    int alignment = 8; ///< width and height are multiples of this
    bool video = true;
    bool audio = true;
    bool control = true;
    bool tunnelForward = false; ///< the client connects to the phone instead of the phone to the client
    QString error;              ///< why the server does not start; empty where it does

    /// "localabstract:scrcpy_1a2b3c4d"
    QByteArray socketName() const;

    /// Whether the video's size is told in session packets, as from version 4 on, instead of once in the stream's head.
    bool hasSessions() const;

    /// The size of the video of a screen of that size.
    QSize videoSize(QSize screen) const;
};

/// Parses what follows the server's class name: the version, and options as "name=value".
ServerOptions parseServerOptions(const QStringList &arguments);

} // namespace varda::phone
