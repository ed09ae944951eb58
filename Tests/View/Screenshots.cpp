// varda-screenshots: pictures of the window in each of its states, for the documentation and for whoever works on it.
//
//     varda-screenshots <folder> [width height]
//
// The window and the model are the real ones; what would come from phones is published by this program.
#include "Support/ViewFixture.h"
#include "Varda/View/AboutPane.h"
#include "Varda/View/Widgets/Icon.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>

#include <functional>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;

QString sampleLog()
{
    static constexpr std::array<const char *, 8> lines{
        "I ActivityTaskManager: START u0 {cmp=com.example.shop/.MainActivity} from uid 2000",
        "D MainActivity: onCreate savedInstanceState=null",
        "I Choreographer: Skipped 34 frames!  The application may be doing too much work on its main thread.",
        "D NetworkClient: --> GET https://api.example.com/v2/catalog?page=1",
        "D NetworkClient: <-- 200 (184 ms, 42.1 kB)",
        "W CatalogRepository: 3 of 60 items have no price, hidden",
        "I CatalogFragment: showing 57 items",
        "E ImageLoader: java.io.IOException: unexpected end of stream on https://img.example.com/4711.webp"};
    QString log = u"--------- beginning of main\n"_s;
    for (int i = 0; i < 48; ++i) {
        log += u"11-20 14:%1:%2.%3  8123  81%4 %5\n"_s.arg(2 + i / 30, 2, 10, QLatin1Char('0'))
                   .arg((i * 2) % 60, 2, 10, QLatin1Char('0'))
                   .arg((i * 137) % 1000, 3, 10, QLatin1Char('0'))
                   .arg(23 + i % 5)
                   .arg(QLatin1StringView(lines.at(static_cast<std::size_t>(i) % lines.size())));
    }
    return log;
}

/// What the user sees of `window` on the screen, with its frame and with what lies over it.
QPixmap picture(const QWidget &window)
{
    QTest::qWait(300); // the window manager places and frames, and the spinner turns
    const QRect frame = window.frameGeometry();
    return window.screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height());
}

class Album
{
public:
    Album(QDir folder, QSize size)
        : m_folder(std::move(folder))
        , m_size(size)
    {
    }

    /// Saves the window as it looks after `publish`, scrolled to `scroll` of its way.
    void add(const QString &name, const std::function<void(ViewFixture &)> &publish, double scroll = 0.0)
    {
        ViewFixture fixture;
        fixture.view->resize(m_size);
        fixture.show();
        publish(fixture);
        ViewFixture::settle();
        QScrollBar *bar = fixture.find<QScrollArea>("mainColumn")->verticalScrollBar();
        bar->setValue(static_cast<int>(scroll * bar->maximum()));
        save(name, picture(*fixture.view));
    }

    void save(const QString &name, const QPixmap &pixmap)
    {
        const QString path = m_folder.filePath(name + u".png"_s);
        if (!pixmap.save(path))
            qFatal("cannot write %s", qUtf8Printable(path));
    }

private:
    const QDir m_folder;
    const QSize m_size;
};

/// A build of 24 MB, three minutes old.
QUrl sampleBuild()
{
    static const QTemporaryDir folder;
    QFile build(folder.filePath(u"shop-debug.apk"_s));
    if (!build.open(QIODevice::WriteOnly) || !build.resize(24'300'000) ||
        !build.setFileTime(QDateTime::currentDateTime().addSecs(-200), QFileDevice::FileModificationTime))
        qFatal("cannot write %s", qUtf8Printable(build.fileName()));
    return QUrl::fromLocalFile(build.fileName());
}

void publishReady(ViewFixture &fixture)
{
    fixture.model->devices = QList<AndroidDevice>{readyPhone, shyPhone, anEmulator};
    fixture.model->selectedID = readyPhone.id;
    fixture.model->apk = sampleBuild();
    fixture.model->packageName = u"com.example.shop"_s;
    fixture.model->status = u"Installed shop-debug.apk on R58M42ABCDE. Existing app data was retained."_s;
}

void publishLogging(ViewFixture &fixture)
{
    publishReady(fixture);
    fixture.model->logs = sampleLog();
    fixture.model->logging = true;
    fixture.model->mirrorRunning = true;
    fixture.model->status = u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s;
}

void addWindows(Album &album)
{
    album.add(u"no-phone"_s, [](ViewFixture &) {});
    album.add(u"unauthorized"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->selectedID = shyPhone.id;
    });
    album.add(u"no-permissions"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.attach({readyPhone.id, u"no permissions"_s, readyPhone.id});
        fixture.model->status = u"error: cannot connect to daemon"_s;
    });
    album.add(u"ready"_s, publishReady);
    album.add(u"menu"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        ViewFixture::settle();
        const QWidget *button = fixture.find("menuButton");
        fixture.view->applicationMenu()->popup(button->mapToGlobal(QPoint(0, button->height() + 4)));
    });
    album.add(u"build-changed"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        QFile build(fixture.model->apk()->toLocalFile());
        if (!build.open(QIODevice::WriteOnly) || !build.resize(24'400'000))
            qFatal("cannot write %s", qUtf8Printable(build.fileName()));
    });
    album.add(u"ready-end"_s, publishReady, 1.0);
    album.add(u"console"_s, publishLogging, 1.0);
    album.add(u"busy"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->busy = true;
        fixture.model->status = u"Installing shop-debug.apk…"_s;
    });
    album.add(u"long-texts"_s, [](ViewFixture &fixture) {
        const QString name = u"A very long device name "_s.repeated(9);
        const AndroidDevice service{u"adb-R58M42ABCDE-nQ8pLx._adb-tls-connect._tcp.and-then-some-more"_s, u"device"_s,
                                    name};
        fixture.model->devices = QList<AndroidDevice>{service, shyPhone, anEmulator, wirelessPhone, readyPhone};
        fixture.model->selectedID = service.id;
        fixture.model->apk = QUrl::fromLocalFile(u"/tmp/"_s + u"build-"_s.repeated(40) + u".apk"_s);
        fixture.model->status =
            u"connected to 192.168.1.50:42137\nsecond line\n/a/"_s + u"path-without-blanks/"_s.repeated(18);
    });
}

void addDialogs(Album &album)
{
    album.add(u"error"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->status = u"Installing shop-debug.apk… failed."_s;
        fixture.model->error = u"adb: failed to install shop-debug.apk: Failure [INSTALL_FAILED_UPDATE_INCOMPATIBLE: "
                               "Existing package com.example.shop signatures do not match newer version; ignoring!]"_s;
    });
    album.add(u"error-long"_s, [](ViewFixture &fixture) {
        fixture.model->error =
            u"Failure [INSTALL_FAILED_VERSION_DOWNGRADE]\n"_s +
            u"java.lang.SecurityException: Shell does not have permission to access user 11.\n"_s.repeated(36);
    });
    album.add(u"error-offline"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->error = u"adb: device offline"_s;
    });
    album.add(u"error-no-reason"_s, [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->error = QString();
    });
    const auto sheet = [](ViewFixture &fixture) {
        publishReady(fixture);
        fixture.model->wireless = true;
        fixture.model->pairingEndpoint = u"192.168.1.50:37123"_s;
        fixture.model->pairingCode = u"482913"_s;
    };
    album.add(u"sheet"_s, sheet);
    album.add(u"sheet-error"_s, [sheet](ViewFixture &fixture) {
        sheet(fixture);
        ViewFixture::settle();
        fixture.model->error = u"Enter the phone’s wireless connection address in host:port format."_s;
    });
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(u"Varda"_s);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 2 && arguments.size() != 4)
        qFatal("usage: varda-screenshots <folder> [width height]");
    QDir folder(arguments.at(1));
    if (!folder.mkpath(u"."_s))
        qFatal("cannot make the folder %s", qUtf8Printable(folder.path()));
    const QSize size =
        arguments.size() == 4 ? QSize(arguments.at(2).toInt(), arguments.at(3).toInt()) : QSize(1180, 820);

    Album album(folder, size);
    addWindows(album);
    addDialogs(album);
    AboutPane about;
    about.present();
    album.save(u"about"_s, picture(about));
    album.save(u"icon"_s, applicationIcon().pixmap(128, 128));
    return 0;
}
