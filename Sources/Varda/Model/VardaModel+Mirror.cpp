// VardaModel: the live phone, a scrcpy process that outlives every action.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/Tools.h"
#include "VardaCore/ChildProcess.h"
#include "VardaCore/ToolError.h"

namespace varda {

using namespace Qt::StringLiterals;

void VardaModel::mirrorPhone(bool record)
{
    if (m_mirror) {
        m_stoppingMirror = true;
        m_mirror->terminate();
        return;
    }
    const std::optional<AndroidDevice> device = actionTarget();
    if (!device)
        return;
    std::optional<QString> recording;
    if (record) {
        recording = m_dialogs->saveLocation(SaveKind::Mpeg4Movie, u"Varda-session.mp4"_s);
        if (!recording || m_mirror) // another mirror may have been opened while the dialog was
            return;
    }
    openMirror(*device, recording);
}

/// Launches scrcpy for `device`. Its own messages are discarded. It leads a session of its own, so that a hang-up or
/// Ctrl+C in the terminal that Varda was started from cannot break a recording.
void VardaModel::openMirror(const AndroidDevice &device, const std::optional<QString> &recording)
{
    const ChildDescription description{
        .executable = ToolLocation::scrcpy(),
        .arguments = Scrcpy::mirror(device.id, device.name, recording),
        .environment = {{u"ADB"_s, ToolLocation::adb()}, {u"SCRCPY_SERVER_PATH"_s, ToolLocation::scrcpyServer()}},
        .standardInput = StandardStream::inherited(),
        .standardOutput = StandardStream::nullDevice(),
        .standardError = StandardStream::nullDevice(),
        .ownSession = true,
    };
    try {
        m_mirror = std::make_shared<ChildProcess>(ChildProcess::launch(description));
    } catch (const std::exception &failure) {
        error = describe(failure);
        return;
    }
    m_mirror->onExit(this, [this, process = std::weak_ptr(m_mirror)](qint32 exitStatus) {
        mirrorEnded(process.lock(), exitStatus);
    });
    mirrorRunning = true;
    status = recording ? u"Recording the real device in the live phone window."_s
                       : u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s;
}

/// Ignores a process that is no longer the mirror; it is null if it is gone.
void VardaModel::mirrorEnded(const std::shared_ptr<ChildProcess> &process, qint32 exitStatus)
{
    if (!process || process != m_mirror)
        return;
    const bool asked = m_stoppingMirror;
    m_mirror.reset();
    mirrorRunning = false;
    m_stoppingMirror = false;
    if (exitStatus != 0 && !asked)
        error = u"Screen control stopped (exit "_s + QString::number(exitStatus) +
                u"). Check USB authorization and reconnect the phone."_s;
}

} // namespace varda
