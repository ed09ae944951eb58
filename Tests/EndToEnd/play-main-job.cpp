// play-main-job: plays what Varda is there for, on the real window with the real adb against a simulated phone: the
// phone is in the list, a build is chosen in the file dialog and installed, and the phone has received its very bytes.
//
//     play-main-job --varda PROGRAM --device SERIAL --apk FILE --service-log FILE --picture FILE.png
//
// The phone is attached to the adb server of the environment already, and writes the service log. The display and the
// session bus with AT-SPI come from Tests/Support/with-display. Each step is printed with the status line that the
// window showed. Exit status 0 when every step went as it should.
#include "VardaWindow.h"

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPixmap>
#include <QProcess>
#include <QScreen>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

/// The SHA-256 of what the last install in the phone's service log brought, empty where there was none.
QString lastInstalledDigest(const QString &serviceLog)
{
    QFile log{serviceLog};
    if (!log.open(QIODevice::ReadOnly))
        return {};
    QString digest;
    while (!log.atEnd()) {
        const QJsonObject record = QJsonDocument::fromJson(log.readLine()).object();
        if (record[u"event"_s] == u"close"_s && record[u"service"_s].toString().contains(u"package 'install'"_s))
            digest = record[u"sha256"_s].toString();
    }
    return digest;
}

QString digestOf(const QString &path)
{
    QFile file{path};
    QCryptographicHash hash{QCryptographicHash::Sha256};
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? QString::fromLatin1(hash.result().toHex())
                                                                 : QString{};
}

/// Saves what the screen shows of the program's main window.
bool savePicture(const QString &path, qint64 pid)
{
    const QList<Accessible> windows = Accessible::application(pid).children();
    const QRect area = windows.isEmpty() ? QRect{} : windows.first().extents();
    return !area.isEmpty() && QGuiApplication::primaryScreen()
                                  ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                                  .save(path, "PNG");
}

/// The play. Every step prints itself; the first that fails ends it.
class Play
{
public:
    explicit Play(const QCommandLineParser &options)
        : device{options.value(u"device"_s)}
        , apk{QFileInfo{options.value(u"apk"_s)}.absoluteFilePath()}
        , serviceLog{options.value(u"service-log"_s)}
        , picture{options.value(u"picture"_s)}
    {
        varda.setProcessChannelMode(QProcess::ForwardedChannels);
        varda.setProgram(options.value(u"varda"_s));
    }

    bool run() { return openWindow() && findPhone() && chooseBuild() && install() && compare() && depict() && quit(); }

private:
    bool openWindow();
    bool findPhone() { return step(u"The phone is listed and ready"_s, window->lists({device}) && readyPhone()); }
    bool readyPhone() { return window->select(device) && window->shows(u"Ready for testing"_s); }
    bool chooseBuild();
    bool install();
    bool compare();
    bool depict() { return step(u"Picture saved as "_s + picture, savePicture(picture, varda.processId())); }
    bool quit();

    /// Prints the step with the status line as it is now; returns `done`.
    bool step(const QString &words, bool done);

    const QString device;
    const QString apk;
    const QString serviceLog;
    const QString picture;
    QProcess varda;
    std::unique_ptr<VardaWindow> window;
    int number = 0;
};

bool Play::step(const QString &words, bool done)
{
    std::printf("%d. %s%s\n", ++number, qUtf8Printable(words), done ? "" : ": FAILED");
    if (window && varda.state() == QProcess::Running)
        std::printf("   status line: %s\n", qUtf8Printable(window->status()));
    std::fflush(stdout);
    return done;
}

bool Play::openWindow()
{
    varda.start();
    if (!varda.waitForStarted())
        return step(u"The program starts ("_s + varda.errorString() + u')', false);
    window = std::make_unique<VardaWindow>(varda.processId());
    return step(u"The window opens"_s, window->opens());
}

bool Play::chooseBuild()
{
    const QString name = QFileInfo{apk}.fileName();
    return step(name + u" is chosen in the file dialog"_s, window->press(u"Choose APK"_s) &&
                                                               window->answerFileDialog(apk) && window->shows(name) &&
                                                               window->buttonBecomes(u"Install on device"_s, true));
}

bool Play::install()
{
    const QString outcome =
        u"Installed "_s + QFileInfo{apk}.fileName() + u" on "_s + device + u". Existing app data was retained."_s;
    return step(u"\"Install on device\" is pressed"_s,
                window->press(u"Install on device"_s) && window->statusBecomes(outcome));
}

bool Play::compare()
{
    const QString sent = digestOf(apk);
    const QString received = lastInstalledDigest(serviceLog);
    return step(u"The phone received the file's bytes (SHA-256 of the file "_s + sent + u", of what came "_s +
                    received + u')',
                !sent.isEmpty() && sent == received);
}

bool Play::quit()
{
    varda.terminate();
    const bool ended = varda.waitForFinished(varda::guardMilliseconds);
    return step(u"The program ends in order"_s,
                ended && varda.exitStatus() == QProcess::NormalExit && varda.exitCode() == 0);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application{argc, argv};
    QCommandLineParser options;
    options.setApplicationDescription(u"Plays the main job on the real window against a simulated phone."_s);
    options.addHelpOption();
    const QStringList names{u"varda"_s, u"device"_s, u"apk"_s, u"service-log"_s, u"picture"_s};
    options.addOptions({
        {names[0], u"The program, with its staged tools beside it."_s, u"program"_s},
        {names[1], u"The serial of the simulated phone, which adb lists already."_s, u"serial"_s},
        {names[2], u"The build to install."_s, u"file"_s},
        {names[3], u"The log that the simulated phone writes."_s, u"file"_s},
        {names[4], u"Where to save a picture of the window, as PNG."_s, u"file"_s},
    });
    options.process(application);
    for (const QString &name : names) {
        if (!options.isSet(name))
            options.showHelp(2);
    }
    return Play{options}.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
