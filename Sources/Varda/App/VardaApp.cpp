// VardaApp: prepares the application object before the first window is made, and stops the model on every way out.
#include "Varda/App/VardaApp.h"

#include "Varda/App/OpenRequests.h"
#include "Varda/App/QuitSignals.h"
#include "Varda/View/AboutPane.h"
#include "Varda/View/Appearance.h"
#include "Varda/View/QtFileDialogs.h"
#include "Varda/View/VardaView.h"
#include "Varda/View/Widgets/Icon.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <cstdlib>
#include <optional>

namespace varda {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Room for what the window manager draws around the window, which is known only once the window is on the screen. The
/// tallest common title bar has 37 pixels.
constexpr QSize frameAllowance{10, 40};

/// What waits for the first picture waits no longer than this: a window that is opened minimized draws none.
constexpr auto longestWaitForPicture = 100ms;

/// Gives the window its icon and starts the model as soon as the window has its first picture: drawing the icon, and
/// the model's threads and commands, would take the processors from it.
class Starter final : public QObject
{
public:
    Starter(VardaModel &model, QWindow &window)
    {
        window.installEventFilter(this);
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, this, [&model] {
            QGuiApplication::setWindowIcon(applicationIcon());
            model.start();
        });
        m_timer.start(longestWaitForPicture);
    }

    bool eventFilter(QObject *window, QEvent *event) override
    {
        if (event->type() == QEvent::Expose) {
            window->removeEventFilter(this);
            m_timer.start(0ms); // on the turn after the one that draws
        }
        return false;
    }

private:
    QTimer m_timer;
};

void quit()
{
    QCoreApplication::exit(0);
}

/// The model, while the event loop runs.
std::weak_ptr<VardaModel> runningModel;

/// Qt ends the process from within the event loop when the display is lost; destructors do not run then.
void stopRunningModel()
{
    if (const std::shared_ptr<VardaModel> model = runningModel.lock())
        model->stop();
}

/// What windows need before they are made: who the program is on the desktop, and how it looks.
void prepareApplication()
{
    QCoreApplication::setApplicationName(u"varda"_s);
    QGuiApplication::setApplicationDisplayName(u"Varda"_s);
    QGuiApplication::setDesktopFileName(u"varda"_s);
    // Qt's file dialog would keep its history and its layout in a settings file; this program writes none.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, u"/dev/null"_s);
    prepareAppearance();
}

} // namespace

VardaApp::VardaApp(int &argc, char **argv)
    : m_application(argc, argv)
    , m_model(VardaModel::create(std::make_unique<QtFileDialogs>()))
    , m_requests(std::make_unique<OpenRequests>())
{
    prepareApplication();
    m_view = std::make_unique<VardaView>(m_model);
    m_about = std::make_unique<AboutPane>(m_view.get());
    fillApplicationMenu();
    QObject::connect(m_view.get(), &VardaView::closed, &m_application, quit);
    QObject::connect(new QuitSignals(&m_application), &QuitSignals::received, &m_application, quit);
    QObject::connect(m_requests.get(), &OpenRequests::requested, m_view.get(),
                     [this](const QUrl &file) { open(file); });
}

VardaApp::~VardaApp() = default;

void VardaApp::fillApplicationMenu()
{
    QMenu *menu = m_view->applicationMenu();
    menu->addSeparator();
    QAction *about = menu->addAction(u"About Varda"_s);
    about->setObjectName(u"aboutAction"_s);
    about->setShortcut(QKeySequence(u"F1"_s));
    QObject::connect(about, &QAction::triggered, m_about.get(), &AboutPane::present);
    QAction *leave = menu->addAction(u"Quit"_s);
    leave->setObjectName(u"quitAction"_s);
    leave->setShortcut(QKeySequence(u"Ctrl+Q"_s));
    QObject::connect(leave, &QAction::triggered, &m_application, quit);

    m_view->addAction(about);
    m_view->addEverywhere(leave);
    m_about->addAction(leave);
}

/// Shows the window at its first size, or as large as the screen allows with the frame around it.
void VardaApp::showWindow()
{
    const QSize available = m_view->screen()->availableSize() - frameAllowance;
    m_view->resize(m_view->size().boundedTo(available).expandedTo(m_view->minimumSize()));
    m_view->show();
}

/// Takes a build that another start of the program was given, and brings the window to the front.
void VardaApp::open(const QUrl &file)
{
    if (!file.isEmpty())
        m_model->acceptAPK(file);
    m_view->setWindowState(m_view->windowState() & ~Qt::WindowMinimized);
    m_view->raise();
    m_view->activateWindow();
    QApplication::alert(m_view.get()); // if the desktop does not let it come to the front
}

int VardaApp::run(const std::optional<QUrl> &file)
{
    showWindow();
    std::optional<Starter> starter(std::in_place, *m_model, *m_view->windowHandle());
    if (file)
        m_model->acceptAPK(*file);
    QTimer::singleShot(0, m_requests.get(), &OpenRequests::listen); // while the display prepares the window
    runningModel = m_model;
    std::atexit(stopRunningModel);
    const int status = QApplication::exec();
    starter.reset(); // or a model that was not started yet would be after its stop
    // Not upon aboutToQuit: later versions of Qt emit it while event loops still run, and a mirror may still be opened.
    m_model->stop();
    runningModel.reset();
    // A poll loop that was cancelled in its pause ends on its next turn. Nothing else may begin: a dialog that opened
    // now would keep the program for ever, and a mirror would not be asked to end.
    m_view->hide();
    m_about->hide();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers);
    return status;
}

} // namespace varda
