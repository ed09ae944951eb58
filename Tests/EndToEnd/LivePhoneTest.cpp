// The live phone for real: the real window, the real adb and the real scrcpy, with a simulated phone behind them.
#include "Stage.h"
#include "Support/FileContents.h"
#include "Support/MirrorWindow.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include "VirtualPhone/VirtualPhone.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <ctime>
#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

constexpr auto recordedMilliseconds = 3'000;
constexpr QSize phoneScreen{720, 1600};
const auto stoppedText =
    QStringLiteral("Screen control stopped (exit %1). Check USB authorization and reconnect the phone.");

/// The scrcpy that is staged for the simulated phone, and the folder with its server file.
const auto stagedScrcpy = QStringLiteral(STAGED_SCRCPY);

/// Milliseconds since the machine's start.
qint64 sinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1'000'000;
}

/// When a process was started, in milliseconds since the machine's start; see proc(5), "starttime".
qint64 startOf(const QString &pid)
{
    QFile file{u"/proc/"_s + pid + u"/stat"};
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    // The second field, a name in parentheses, may hold spaces; the start is the twenty-second.
    const QByteArray all = file.readAll();
    const QList<QByteArray> fields = all.mid(all.lastIndexOf(')') + 2).split(' ');
    return fields.value(19).toLongLong() * 1000 / sysconf(_SC_CLK_TCK);
}

QString compact(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument{object}.toJson(QJsonDocument::Compact));
}

} // namespace

// Takes a step of the play, and ends the test with it where it failed or skipped.
#define STEP(call)                                                                                                     \
    do {                                                                                                               \
        call;                                                                                                          \
        if (QTest::currentTestFailed() || !stage)                                                                      \
            return;                                                                                                    \
    } while (false)

class LivePhoneTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        if (QTest::currentTestFailed() && phone) {
            for (const QJsonObject &record : phone->log())
                qInfo().noquote() << compact(record);
        }
        window.reset();
        stage.reset();
        phone.reset();
    }

    void saysWhyItCannotBeOpened()
    {
        STEP(open({}));
        QVERIFY(window->press(u"Open live phone"_s));
        const QString message = window->takeAlert();
        QVERIFY2(message.endsWith(u"/lib/varda/Tools/scrcpy/scrcpy: No such file or directory"_s),
                 qUtf8Printable(message));
        QVERIFY(window->buttonBecomes(u"Open live phone"_s, true));
    }

    void showsAMovingPicture()
    {
        STEP(openWithScrcpy());
        STEP(openLivePhone());
        QVERIFY(window->statusBecomes(u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s));
        const QString mirror = mirrorWindow();
        const auto title = outputOf(u"xdotool"_s, {u"getwindowname"_s, mirror});
        QCOMPARE(QString::fromUtf8(title.value_or(QByteArray{})).trimmed(), u"Varda · Pixel 8"_s);
        const QImage first = pictureOf(mirror);
        QVERIFY(eventually([&] { return pictureOf(mirror) != first; }));
        STEP(stopLivePhone());
    }

    void forwardsClicks()
    {
        STEP(openWithScrcpy());
        STEP(openLivePhone());
        const QString mirror = mirrorWindow();
        QVERIFY(activate(mirror));
        const QSize size = windowGeometry(mirror).size();
        xdotool({u"mousemove"_s, u"--window"_s, mirror, QString::number(size.width() / 4),
                 QString::number(size.height() / 4), u"click"_s, u"1"_s});
        const auto released = [this] { return !touches().isEmpty() && touches().last()[u"action"_s] == 1; };
        QVERIFY(eventually(released));
        for (const QJsonObject &record : touches())
            qInfo().noquote() << compact(record);
        const QJsonObject release = touches().last();
        QVERIFY(qAbs(release[u"x"_s].toInt() - phoneScreen.width() / 4) <= 8);
        QVERIFY(qAbs(release[u"y"_s].toInt() - phoneScreen.height() / 4) <= 8);
        STEP(stopLivePhone());
    }

    void leavesARecording()
    {
        STEP(openWithScrcpy());
        const QString path = stage->home(u"Aufnahme für Köln.mp4"_s);
        QElapsedTimer clock;
        clock.start();
        STEP(startRecording(path));
        STEP(stopLivePhone());
        // It cannot be longer than all of it took.
        checkRecording(path, recordedMilliseconds / 1000.0 - 1, static_cast<double>(clock.elapsed()) / 1000.0);
    }

    void endsSilentlyWithItsOwnWindow()
    {
        STEP(openWithScrcpy());
        STEP(watchScrcpy());
        STEP(openLivePhone());
        // The window manager may miss the keys while the new window takes the focus; a user presses them again.
        QVERIFY(eventually([] {
            const QString mirror = mirrorWindow();
            if (!mirror.isEmpty() && activate(mirror))
                pressKeys({u"alt+F4"_s});
            return eventually([] { return mirrorWindow().isEmpty(); }, 5s);
        }));
        QVERIFY(window->buttonBecomes(u"Open live phone"_s, true));
        QCOMPARE(processesOf(u"scrcpy"_s), QStringList{});
        STEP(checkEnd(0));
        QCOMPARE(window->status(), u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s);
    }

    void completesTheRecordingWhenVardaQuits()
    {
        STEP(openWithScrcpy());
        const QString path = stage->home(u"Sitzung.mp4"_s);
        QElapsedTimer clock;
        clock.start();
        STEP(startRecording(path));
        STEP(quitVarda());
        // Varda asks scrcpy to end and does not wait for it.
        QVERIFY(eventually([this] { return processesOf(u"scrcpy"_s).isEmpty(); }));
        checkRecording(path, recordedMilliseconds / 1000.0 - 1, static_cast<double>(clock.elapsed()) / 1000.0);
        stage->killServer();
        eventually([this] { return stage->leftovers().isEmpty(); });
        QCOMPARE(stage->leftovers(), QStringList{});
    }

    void saysThatThePhoneVanished()
    {
        STEP(openWithScrcpy());
        STEP(watchScrcpy());
        STEP(openLivePhone());
        QVERIFY(phone->command(u"drop"_s).startsWith(u"ok"_s));
        QVERIFY(eventually([this] { return processesOf(u"scrcpy"_s).isEmpty(); }));
        STEP(checkEnd(2));
        QVERIFY(mirrorWindow().isEmpty());
    }

private:
    /// Opens Varda with a ready phone, and with the program `scrcpy` in its tree.
    void open(const QString &scrcpy)
    {
        stage = std::make_unique<Stage>(
            Programs{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = scrcpy});
        QVERIFY2(stage->errorString().isEmpty(), qUtf8Printable(stage->errorString()));
        if (!scrcpy.isEmpty())
            QVERIFY(
                QFile::copy(QFileInfo{scrcpy}.absolutePath() + u"/scrcpy-server", besideScrcpy(u"scrcpy-server"_s)));
        phoneStarted = sinceBoot();
        phone = std::make_unique<VirtualPhone>();
        QVERIFY2(phone->errorString().isEmpty(), qUtf8Printable(phone->errorString()));
        // Before Varda: of two adb that start the server at the same moment one fails, and Varda's first may be the
        // other.
        const QString connected = stage->adb({u"connect"_s, phone->endpoint()});
        QVERIFY2(connected.contains(u"connected to"_s), qUtf8Printable(connected));
        QVERIFY(stage->startVarda());
        window = std::make_unique<VardaWindow>(stage->varda().processId());
        QVERIFY(window->opens());
        QVERIFY(window->lists({phone->serial()}));
        QVERIFY(window->buttonBecomes(u"Open live phone"_s, true));
    }

    /// Puts the real scrcpy on the stage; skips the test where there is none.
    void openWithScrcpy()
    {
        if (!QFileInfo{stagedScrcpy}.isExecutable())
            QSKIP("there is no scrcpy at " STAGED_SCRCPY "; Scripts/stage-tools puts it there");
        if (const QString tool = missingMirrorTool(); !tool.isEmpty())
            QSKIP(qUtf8Printable(tool + u" is not installed"_s));
        open(stagedScrcpy);
    }

    void openLivePhone()
    {
        QVERIFY(window->buttonBecomes(u"Open live phone"_s, true));
        const Accessible button = window->await(u"push button"_s, u"Open live phone"_s);
        const qint64 pressed = sinceBoot();
        QVERIFY(button.act(u"Press"_s));
        QVERIFY(eventually([this] { return !mirrored().isEmpty(); }));
        const qint64 launched = startOf(processesOf(u"scrcpy"_s).value(0).section(u' ', 0, 0));
        // The phone's log counts from the phone's own start.
        const qint64 streamed = mirrored().last()[u"time"_s].toInteger() + phoneStarted;
        QVERIFY(eventually(mirrorShowsPhone));
        qInfo() << "milliseconds since the press: scrcpy launched" << launched - pressed << "(to 10 ms), phone streams"
                << streamed - pressed << ", picture seen" << sinceBoot() - pressed;
    }

    void startRecording(const QString &path)
    {
        QVERIFY(window->press(u"Record test"_s));
        QVERIFY(window->answerFileDialog(path));
        QVERIFY(window->statusBecomes(u"Recording the real device in the live phone window."_s));
        QVERIFY(eventually(mirrorShowsPhone));
        QTest::qWait(recordedMilliseconds); // the length to be recorded
    }

    void stopLivePhone()
    {
        QVERIFY(window->press(u"Stop live phone"_s));
        QVERIFY(window->buttonBecomes(u"Open live phone"_s, true));
        QCOMPARE(processesOf(u"scrcpy"_s), QStringList{});
        QVERIFY(mirrorWindow().isEmpty());
        QCOMPARE(window->alert(), QString{});
    }

    /// The path of a file beside the scrcpy that Varda runs.
    QString besideScrcpy(const QString &name) const
    {
        return QFileInfo{stage->home()}.absolutePath() + u"/lib/varda/Tools/scrcpy/"_s + name;
    }

    /// Has scrcpy's messages and exit status written down. Not for a mirror that Varda ends: the script would get the
    /// signal.
    void watchScrcpy() const
    {
        QFile script{besideScrcpy(u"scrcpy"_s)};
        QVERIFY(script.open(QIODevice::WriteOnly | QIODevice::Truncate));
        script.write("#!/bin/sh\n'" + QFile::encodeName(stagedScrcpy) +
                     "' \"$@\" 2> \"$0.messages\"\nstatus=$?\necho $status > \"$0.status\"\nexit $status\n");
    }

    /// Checks that the scrcpy that was watched ended with `wanted`, and that Varda says so unless the status is 0.
    void checkEnd(int wanted) const
    {
        bool written = false;
        const int status = contents(besideScrcpy(u"scrcpy.status"_s)).trimmed().toInt(&written);
        const QByteArray messages = contents(besideScrcpy(u"scrcpy.messages"_s));
        QVERIFY2(written && isScrcpyStatus(status, wanted, messages), messages.constData());
        if (status == 0)
            QCOMPARE(window->alert(), QString{});
        else
            QCOMPARE(window->takeAlert(), stoppedText.arg(status));
    }

    void quitVarda()
    {
        QVERIFY(activate(visibleWindows(stage->varda().processId(), u"Varda"_s).value(0)));
        pressKeys({u"ctrl+q"_s});
        QVERIFY(eventually([this] { return stage->varda().state() == QProcess::NotRunning; }));
        QCOMPARE(stage->varda().exitStatus(), QProcess::NormalExit);
        QCOMPARE(stage->varda().exitCode(), 0);
    }

    /// What the phone has logged of mirrors that started, and of fingers and mouse.
    QList<QJsonObject> mirrored() const
    {
        QList<QJsonObject> found = phone->log();
        found.removeIf([](const QJsonObject &record) { return record[u"event"_s] != u"mirror"_s; });
        return found;
    }

    QList<QJsonObject> touches() const
    {
        QList<QJsonObject> found = phone->log();
        found.removeIf([](const QJsonObject &record) { return record[u"type"_s] != u"touch"_s; });
        return found;
    }

    QStringList processesOf(const QString &program) const
    {
        // "4711 PROGRAM --serial …"; a process that is not Varda itself and bears the program's name.
        QStringList found = stage->processes();
        found.removeIf([&](const QString &process) { return !process.contains(program + u" --serial"); });
        return found;
    }

    /// Checks the recording's codec and picture, and that its seconds lie between these.
    void checkRecording(const QString &path, double least, double most) const
    {
        const QJsonObject probed = probeRecording(path);
        qInfo().noquote() << compact(probed);
        const QJsonObject stream = probed[u"streams"_s].toArray().first().toObject();
        QCOMPARE(stream[u"codec_name"_s].toString(), u"h264"_s);
        QCOMPARE(QSize(stream[u"width"_s].toInt(), stream[u"height"_s].toInt()), phoneScreen);
        QVERIFY(stream[u"nb_read_frames"_s].toString().toInt() > 5);
        const double duration = probed[u"format"_s][u"duration"_s].toString().toDouble();
        QVERIFY2(duration >= least && duration <= most, qUtf8Printable(QString::number(duration)));
    }

    std::unique_ptr<Stage> stage;
    std::unique_ptr<VirtualPhone> phone;
    std::unique_ptr<VardaWindow> window;
    qint64 phoneStarted = 0; ///< milliseconds since boot
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::LivePhoneTest)
#include "LivePhoneTest.moc"
