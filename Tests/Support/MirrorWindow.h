// MirrorWindow: the window that the real scrcpy shows a simulated phone in, and the recording that it leaves, as the
// tools xdotool, import and ffprobe see them.
#pragma once

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include <optional>

namespace varda::test {

constexpr int mirrorGuard = 30'000; // milliseconds, for what takes a second

/// The standard output of a program; nothing if it fails.
inline std::optional<QByteArray> outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(mirrorGuard) || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput();
}

/// The first of the tools that is not installed; empty if all are.
inline QString missingMirrorTool()
{
    for (const QString &tool : {QStringLiteral("xdotool"), QStringLiteral("import"), QStringLiteral("ffprobe")}) {
        if (QStandardPaths::findExecutable(tool).isEmpty())
            return tool;
    }
    return {};
}

/// The mirror's X window; empty until it is there. In the C locale, xdotool matches no other characters.
inline QString mirrorWindow()
{
    const auto found =
        outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                             QStringLiteral("--name"), QStringLiteral("^Varda .+ Pixel 8$")});
    return QString::fromLatin1(found.value_or(QByteArray{}).split('\n').first());
}

inline QImage pictureOf(const QString &window)
{
    const auto png = outputOf(QStringLiteral("import"), {QStringLiteral("-window"), window, QStringLiteral("png:-")});
    return QImage::fromData(png.value_or(QByteArray{}), "PNG");
}

/// Whether the mirror shows the phone's home screen and not the black of a window without a picture.
inline bool mirrorShowsPhone()
{
    const QString window = mirrorWindow();
    const QImage picture = window.isEmpty() ? QImage{} : pictureOf(window);
    return !picture.isNull() && picture.pixelColor(picture.width() / 18, picture.height() / 2).blue() > 40;
}

/// Whether scrcpy ended as it should, with the exit status `wanted`.
///
/// With scrcpy 4.1 and SDL 3 it may be 1 instead, about once in a hundred times on a busy machine: threads that end
/// wake the main thread by an X event to the mirror's window, by a connection of their own. If the X server meets that
/// event after the window has gone, it is an error, for which Xlib ends a program that has done all its work. The
/// `messages` tell.
inline bool isScrcpyStatus(int status, int wanted, const QByteArray &messages)
{
    return status == wanted || (status == 1 && messages.contains("BadWindow") && messages.contains("X_SendEvent"));
}

/// ffprobe's report on the recording, with its duration and the frames, codec and size of its stream; empty if it
/// cannot read it.
inline QJsonObject probeRecording(const QString &path)
{
    const auto report =
        outputOf(QStringLiteral("ffprobe"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-of"), QStringLiteral("json"),
                  QStringLiteral("-count_frames"), QStringLiteral("-show_entries"),
                  QStringLiteral("stream=codec_name,width,height,nb_read_frames:format=duration"), path});
    return QJsonDocument::fromJson(report.value_or(QByteArray{})).object();
}

} // namespace varda::test
