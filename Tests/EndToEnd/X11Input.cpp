// X11Input: by xdotool: each call is one run, so that the server has taken the events when it returns.
#include "X11Input.h"

#include "Accessibility/WindowDriver.h"

#include <QDebug>
#include <QProcess>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

QString run(const QString &program, const QStringList &arguments, bool warn)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended = process.waitForFinished(guardMilliseconds);
    if (warn && (!ended || process.exitCode() != 0))
        qWarning() << program << arguments << process.errorString() << process.readAllStandardError();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QStringList lines(const QString &text)
{
    return text.split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

QString xdotool(const QStringList &arguments)
{
    return run(u"xdotool"_s, arguments, true);
}

QStringList visibleWindows(qint64 pid, const QString &title)
{
    const QString pattern = title.isEmpty() ? u".*"_s : u'^' + QRegularExpression::escape(title) + u'$';
    // A search that finds nothing is a failure to xdotool.
    return lines(run(
        u"xdotool"_s,
        {u"search"_s, u"--all"_s, u"--onlyvisible"_s, u"--pid"_s, QString::number(pid), u"--name"_s, pattern}, false));
}

QRect windowGeometry(const QString &window)
{
    // X=10\nY=20\nWIDTH=1180\nHEIGHT=820\n among other lines.
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    for (const QString &line : lines(xdotool({u"getwindowgeometry"_s, u"--shell"_s, window}))) {
        const int value = line.section(u'=', 1).toInt();
        const QString key = line.section(u'=', 0, 0);
        if (key == u"X"_s)
            x = value;
        else if (key == u"Y"_s)
            y = value;
        else if (key == u"WIDTH"_s)
            width = value;
        else if (key == u"HEIGHT"_s)
            height = value;
    }
    return {x, y, width, height};
}

QSize sizeWithFrame(const QString &window)
{
    // _NET_FRAME_EXTENTS = 1, 1, 20, 5: left, right, top and bottom
    const QStringList extents =
        run(u"xprop"_s, {u"-notype"_s, u"-id"_s, window, u"_NET_FRAME_EXTENTS"_s}, true).section(u'=', 1).split(u',');
    if (extents.size() != 4)
        return {};
    return windowGeometry(window).size() +
           QSize(extents[0].toInt() + extents[1].toInt(), extents[2].toInt() + extents[3].toInt());
}

QSize screenSize()
{
    const QString size = xdotool({u"getdisplaygeometry"_s}); // "1600 1200"
    return {size.section(u' ', 0, 0).toInt(), size.section(u' ', 1).toInt()};
}

bool activate(const QString &window)
{
    xdotool({u"windowactivate"_s, window});
    return eventually([&] { return run(u"xdotool"_s, {u"getactivewindow"_s}, false) == window; });
}

void pressKeys(const QStringList &keys)
{
    xdotool(QStringList{u"key"_s, u"--clearmodifiers"_s} + keys);
}

void typeText(const QString &text)
{
    xdotool({u"type"_s, u"--clearmodifiers"_s, text});
}

void movePointer(QPoint position)
{
    xdotool({u"mousemove"_s, QString::number(position.x()), QString::number(position.y())});
}

} // namespace varda::test
