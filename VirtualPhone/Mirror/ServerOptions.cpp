// ServerOptions: options that make no difference here are passed over.
#include "Mirror/ServerOptions.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr int firstVersionWithSessions = 4;

int roundedDown(int length, int alignment)
{
    return qMax(alignment, length / alignment * alignment);
}

} // namespace

QByteArray ServerOptions::socketName() const
{
    return scid.isEmpty() ? QByteArray("localabstract:scrcpy") : "localabstract:scrcpy_" + scid;
}

bool ServerOptions::hasSessions() const
{
    return version.section(u'.', 0, 0).toInt() >= firstVersionWithSessions;
}

QSize ServerOptions::videoSize(QSize screen) const
{
    QSize size = screen;
    if (maxSize > 0 && qMax(screen.width(), screen.height()) > maxSize)
        size.scale(maxSize, maxSize, Qt::KeepAspectRatio);
    // H.264 stores colour at half the resolution, so both lengths must be even in any case.
    const int step = qMax(2, alignment + alignment % 2);
    return {roundedDown(size.width(), step), roundedDown(size.height(), step)};
}

ServerOptions parseServerOptions(const QStringList &arguments)
{
    ServerOptions options;
    options.version = arguments.value(0);
    if (options.version.isEmpty())
        options.error = u"missing client version"_s;
    for (const QString &argument : arguments.mid(1)) {
        const QString name = argument.section(u'=', 0, 0);
        const QString value = argument.section(u'=', 1);
        const bool enabled = value != "false"_L1;
        if (name == "scid"_L1)
            options.scid = value.toLatin1();
        else if (name == "video_codec"_L1)
            options.videoCodec = value;
        else if (name == "max_size"_L1)
            options.maxSize = value.toInt();
        else if (name == "min_size_alignment"_L1)
            options.alignment = qBound(1, value.toInt(), 16);
        else if (name == "video"_L1)
            options.video = enabled;
        else if (name == "audio"_L1)
            options.audio = enabled;
        else if (name == "control"_L1)
            options.control = enabled;
        else if (name == "tunnel_forward"_L1)
            options.tunnelForward = enabled;
    }
    if (options.videoCodec != "h264"_L1)
        options.error = u"no encoder for "_s + options.videoCodec;
    return options;
}

} // namespace varda::phone
