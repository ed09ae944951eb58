// VardaModel: life, poll loop, action runner and refresh.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/RunAdb.h"
#include "Varda/Model/ToolLocation.h"
#include "VardaCore/ChildProcess.h"
#include "VardaCore/ToolError.h"

#include <QCoroTimer>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>

namespace varda {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Between the end of one tick's work and the start of the next tick.
constexpr auto pollPause = 2500ms;

/// The device to select where none is: the first phone, else the first emulator.
std::optional<QString> firstChoice(const QList<AndroidDevice> &devices)
{
    const auto phone = std::find_if(devices.begin(), devices.end(), [](const auto &each) { return !each.emulator(); });
    if (phone != devices.end())
        return phone->id;
    if (!devices.isEmpty())
        return devices.first().id;
    return std::nullopt;
}

} // namespace

/// One run of the poll loop, shared by the loop and the model, which may have started another run by then.
struct VardaModel::Poll
{
    Poll() { pause.setSingleShot(true); }

    /// Ends the loop at its next check. A timer that is stopped would never resume the loop that awaits it, so a pause
    /// is cut short instead.
    void cancel()
    {
        cancelled = true;
        if (pause.isActive())
            pause.start(0ms);
    }

    bool cancelled = false;
    QTimer pause;
};

std::shared_ptr<VardaModel> VardaModel::create(std::unique_ptr<FileDialogs> dialogs)
{
    return std::shared_ptr<VardaModel>(new VardaModel(std::move(dialogs)));
}

VardaModel::VardaModel(std::unique_ptr<FileDialogs> fileDialogs)
    : dialogs(std::move(fileDialogs))
{
}

VardaModel::~VardaModel()
{
    if (mirror)
        mirror->abandon();
}

std::optional<AndroidDevice> VardaModel::selected() const
{
    const auto isSelected = [this](const AndroidDevice &device) { return device.id == selectedID(); };
    const auto found = std::find_if(devices().begin(), devices().end(), isSelected);
    if (found == devices().end())
        return std::nullopt;
    return *found;
}

bool VardaModel::deviceReady() const
{
    const std::optional<AndroidDevice> device = selected();
    return device && device->ready();
}

bool VardaModel::takesActions() const
{
    return deviceReady() && !busy();
}

void VardaModel::selectionChanged(const std::optional<QString> &previous)
{
    if (selectedID() == previous)
        return;
    logging = false;
    logs = QString();
}

/// The device that an action may start on now.
std::optional<AndroidDevice> VardaModel::actionTarget() const
{
    return takesActions() ? selected() : std::nullopt;
}

void VardaModel::start()
{
    if (poll)
        return;
    poll = std::make_shared<Poll>();
    const auto begin = [self = shared_from_this(), poll = poll] { pollUntilCancelled(self, poll); };
    QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
}

void VardaModel::stop()
{
    if (poll)
        poll->cancel();
    poll.reset();
    stoppingMirror = true;
    if (mirror)
        mirror->terminate();
}

QCoro::Task<> VardaModel::pollUntilCancelled(std::shared_ptr<VardaModel> self, std::shared_ptr<Poll> poll)
{
    while (!poll->cancelled) {
        if (!self->busy()) {
            co_await self->refresh();
            if (self->logging())
                co_await self->readLogs();
        }
        if (poll->cancelled)
            break;
        poll->pause.start(pollPause);
        co_await poll->pause;
    }
}

void VardaModel::run(const QString &working, Action action)
{
    if (busy())
        return;
    busy = true;
    status = working;
    const auto begin = [self = shared_from_this(), working, action = std::move(action)] {
        perform(self, working, action);
    };
    QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
}

QCoro::Task<> VardaModel::perform(std::shared_ptr<VardaModel> self, QString working, Action action)
{
    try {
        const QString outcome = co_await action();
        self->status = outcome;
    } catch (const std::exception &failure) {
        self->error = describe(failure);
        self->status = working + u" failed."_s;
    }
    self->busy = false;
}

QCoro::Task<> VardaModel::refresh()
{
    const auto self = shared_from_this();
    if (const QFileInfo tool(ToolLocation::adb()); !tool.isFile() || !tool.isExecutable()) {
        status = u"Android tools are missing from this build."_s;
        co_return;
    }
    try {
        const CommandResult listing = co_await runAdb(Adb::devices());
        devices = AndroidDevice::parse(listing.checked().text());
    } catch (const std::exception &failure) {
        status = describe(failure);
        co_return;
    }
    if (!selectedID())
        selectedID = firstChoice(devices());
    if (devices().isEmpty())
        status = u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s;
}

} // namespace varda
