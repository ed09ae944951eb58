// VardaModel: the one observable state of the application. Everything that the window shows is a property here, and
// everything that a user can do is a method here.
//
// The implementation is split by what a user does:
//   VardaModel.cpp              life, poll loop, action runner, refresh
//   VardaModel+Build.cpp        choosing and installing a build
//   VardaModel+AppActions.cpp   launching, stopping, listing, screenshots
//   VardaModel+Console.cpp      the log console
//   VardaModel+Wireless.cpp     pairing and connecting
//   VardaModel+Mirror.cpp       the live phone
#pragma once

#include "Varda/Model/BuildFile.h"
#include "Varda/Model/FileDialogs.h"
#include "Varda/Model/Published.h"
#include "VardaCore/AndroidDevice.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace varda {

class ChildProcess;

/// Lives on the main thread, as do all its properties and methods; it needs a running event loop. Commands block only
/// inside the command runner. Three kinds of method hold their caller up: those that ask the user for a file;
/// `exportLogs`, which writes it; and `mirrorPhone`, until the system has loaded scrcpy or failed to: 0.1 ms, or 10 ms
/// from a disk. So `stop` and the destructor never meet a mirror that is still being launched.
///
/// A method whose guards fail (no device, device not ready, an action in flight, a dialog cancelled) does nothing and
/// says nothing: the window disables its control in the same conditions.
///
/// Always owned by a shared pointer: a poll loop or an action in flight keeps the model alive until it has ended.
class VardaModel final : public QObject, public std::enable_shared_from_this<VardaModel>
{
    Q_OBJECT

    /// Shared by the properties, which refer to it and therefore come after it.
    const std::function<void()> m_announce = [this] { Q_EMIT objectWillChange(); };

public:
    /// A model that knows no device yet and does nothing until `start()`.
    static std::shared_ptr<VardaModel> create(std::unique_ptr<FileDialogs> dialogs);
    Q_DISABLE_COPY_MOVE(VardaModel)
    /// Leaves a running mirror and its recording alone; `stop()` is what ends them.
    ~VardaModel() override;

    /// The attached devices of the last successful listing, in adb's order.
    Published<QList<AndroidDevice>> devices{m_announce};
    /// Serial of the device that actions and console address; kept while its phone is unplugged. Writing another one
    /// turns the console off and empties it.
    Published<std::optional<QString>> selectedID{
        m_announce, std::nullopt, [this](const std::optional<QString> &previous) { selectionChanged(previous); }};
    /// One line of progress and outcome.
    Published<QString> status{m_announce, QStringLiteral("Connect an Android phone with a USB data cable.")};
    /// An action is in flight; polling pauses.
    Published<bool> busy{m_announce, false};
    /// The build to install: a regular ".apk" file when it was accepted.
    Published<std::optional<QUrl>> apk{m_announce, std::nullopt, [this](const auto &) { readChosenBuild(); }};
    /// The package ID as typed, untrimmed.
    Published<QString> packageName{m_announce};
    /// The console: one whole snapshot or notice, never an accumulation.
    Published<QString> logs{m_announce};
    /// The console is live: each tick replaces `logs`.
    Published<bool> logging{m_announce, false};
    /// A mirror process is alive.
    Published<bool> mirrorRunning{m_announce, false};
    /// The Wi-Fi sheet is shown.
    Published<bool> wireless{m_announce, false};
    /// The pairing address as typed.
    Published<QString> pairingEndpoint{m_announce};
    /// The connection address as typed.
    Published<QString> connectEndpoint{m_announce};
    /// The six-digit pairing code as typed; emptied as soon as pairing starts.
    Published<QString> pairingCode{m_announce};
    /// The last failure, until whoever shows it clears it; the model never does. An empty text is a failure too.
    Published<std::optional<QString>> error{m_announce};

    /// The first device whose serial is `selectedID`. No fallback: absent while that phone is away.
    std::optional<AndroidDevice> selected() const;
    /// The selected device is attached and takes commands.
    bool deviceReady() const;
    /// The device is ready and no action is in flight: an action that needs a device may start.
    bool takesActions() const;

    /// Starts polling, unless it runs: list the devices, read the console if it is live, pause 2.5 seconds, again.
    void start();
    /// Ends polling without waiting for a command in flight, and asks a running mirror to end.
    void stop();

    /// Lists the devices and selects one if none is selected. Never throws: failures go to `status`.
    QCoro::Task<> refresh();
    /// Starts `refresh` on the next turn of the event loop and does not wait for it.
    void startRefresh();
    /// Reads one console snapshot. Never throws: failures turn the console off and go to `error`.
    QCoro::Task<> readLogs();
    /// Asks where to, and saves what the console shows.
    void exportLogs();

    /// The file `apk` when it was chosen, which it may no longer be.
    const std::optional<BuildFile> &buildWhenChosen() const { return m_chosenBuild; }
    /// Asks for a build and hands it to `acceptAPK`.
    void chooseAPK();
    /// The one gate for builds: takes a regular local ".apk" file, refuses anything else through `error`.
    void acceptAPK(const QUrl &location);
    /// Installs `apk` on the selected device, keeping the data of an installed version.
    void install();

    /// Launches the app `packageName` through its launcher activity, or force-stops it.
    void appAction(bool launch);
    /// Shows the user-installed package IDs in the console, and turns its live reading off.
    void listApps();
    /// Asks where to, and saves the device's screen as a PNG file.
    void screenshot();

    /// Pairs with `pairingEndpoint` by `pairingCode`, which it empties.
    void pair();
    /// Connects to `connectEndpoint` and selects the phone that it brings. Hides QObject::connect.
    void connect();

    /// Opens the live phone, recorded to a file that the user chooses if `record` is true; ends a running one
    /// whatever `record` says.
    void mirrorPhone(bool record);

Q_SIGNALS:
    /// A property is about to change; emitted before every write. Render after the current turn of the event loop.
    void objectWillChange();

private:
    /// The body of an action: what it does, and the sentence that it ends with. Throws what went wrong.
    using Action = std::function<QCoro::Task<QString>()>;
    struct Poll;

    explicit VardaModel(std::unique_ptr<FileDialogs> dialogs);

    void selectionChanged(const std::optional<QString> &previous);
    void readChosenBuild();
    std::optional<AndroidDevice> actionTarget() const;

    void run(const QString &working, Action action);
    static QCoro::Task<> perform(std::shared_ptr<VardaModel> self, QString working, Action action);
    static QCoro::Task<> tick(std::shared_ptr<Poll> poll);

    void openMirror(const AndroidDevice &device, const std::optional<QString> &recording);
    void mirrorEnded(const std::shared_ptr<ChildProcess> &process, qint32 exitStatus);

    const std::unique_ptr<FileDialogs> m_dialogs;
    std::optional<BuildFile> m_chosenBuild;
    std::shared_ptr<ChildProcess> m_mirror; ///< the running mirror, or null
    bool m_stoppingMirror = false;          ///< the mirror was asked to end: its exit status is no failure
    std::shared_ptr<Poll> m_poll;           ///< the running poll loop, or null
};

} // namespace varda
