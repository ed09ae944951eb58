// VardaModel: life, poll loop, action runner and refresh.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/Tools.h"
#include "VardaCore/ChildProcess.h"
#include "VardaCore/ToolError.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTimer>

#include <algorithm>

namespace varda {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Between the end of one tick's work and the start of the next tick.
constexpr auto pollPause = 2500ms;

/// The device to select if none is selected: the first phone, else the first emulator.
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

/// The poll loop from `start` to `stop`. It is held by the model and by the tick under way, and it holds the model.
struct VardaModel::Poll
{
    std::shared_ptr<VardaModel> model; ///< null once stopped
    QTimer pause;                      ///< before the next tick
};

std::shared_ptr<VardaModel> VardaModel::create(std::unique_ptr<FileDialogs> dialogs)
{
    return std::shared_ptr<VardaModel>(new VardaModel(std::move(dialogs)));
}

VardaModel::VardaModel(std::unique_ptr<FileDialogs> dialogs)
    : m_dialogs(std::move(dialogs))
{
}

VardaModel::~VardaModel()
{
    if (m_mirror)
        m_mirror->abandon();
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
    if (m_poll)
        return;
    m_poll = std::make_shared<Poll>();
    m_poll->model = shared_from_this();
    m_poll->pause.setSingleShot(true);
    m_poll->pause.setTimerType(Qt::PreciseTimer); // the only type that is never early
    const auto begin = [running = std::weak_ptr(m_poll)] {
        if (const std::shared_ptr<Poll> stillRunning = running.lock())
            tick(stillRunning);
    };
    // The application's event and not the timer's: the end of a tick may be the end of the timer, and of the model.
    QObject::connect(&m_poll->pause, &QTimer::timeout, qApp, begin, Qt::QueuedConnection);
    QMetaObject::invokeMethod(qApp, begin, Qt::QueuedConnection);
}

void VardaModel::stop()
{
    if (m_poll) {
        m_poll->pause.stop();
        m_poll->model.reset();
    }
    m_poll.reset();
    m_stoppingMirror = true;
    if (m_mirror)
        m_mirror->terminate();
}

QCoro::Task<> VardaModel::tick(std::shared_ptr<Poll> poll)
{
    const std::shared_ptr<VardaModel> self = poll->model;
    // However this tick ends, there is a next one.
    const auto next = qScopeGuard([&poll] {
        if (poll->model)
            poll->pause.start(pollPause);
    });
    if (!self->busy()) {
        co_await self->refresh();
        if (self->logging())
            co_await self->readLogs();
    }
}

void VardaModel::run(const QString &working, Action action)
{
    if (busy())
        return;
    // The action in flight holds this, so that `busy` ends with the action however that ends.
    const std::shared_ptr<VardaModel> held(this, [self = shared_from_this()](VardaModel *) { self->busy = false; });
    busy = true;
    status = working;
    const auto begin = [held, working, action = std::move(action)] { perform(held, working, action); };
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
        if (!selectedID())
            selectedID = firstChoice(devices());
        if (devices().isEmpty())
            status = u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s;
    } catch (const std::exception &failure) {
        status = describe(failure);
    }
}

void VardaModel::startRefresh()
{
    // Nobody awaits this task, and nobody needs to: `refresh` reports its failures itself.
    const auto begin = [self = shared_from_this()] { self->refresh(); };
    QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
}

} // namespace varda
