// VardaModel: the log console.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/SaveFile.h"
#include "Varda/Model/Tools.h"
#include "VardaCore/Text.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/Validation.h"

#include <algorithm>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// The first process ID in what `pidof` printed; absent if the app does not run.
std::optional<QString> firstProcessID(const QString &output)
{
    const QString first = output.simplified().section(u' ', 0, 0);
    const auto isDigit = [](QChar character) { return character >= u'0' && character <= u'9'; };
    if (first.isEmpty() || !std::all_of(first.begin(), first.end(), isDigit))
        return std::nullopt;
    return first;
}

/// The latest log of device `serial`, only of the app `package` if one is given.
QCoro::Task<QString> readSnapshot(QString serial, QString package)
{
    std::optional<QString> pid;
    if (!package.isEmpty()) {
        const CommandResult found = co_await runAdb(Adb::processID(serial, package));
        pid = firstProcessID(found.text()); // not checked: `pidof` exits with 1 if no process matches
        if (!pid)
            co_return u"This app is not running. Launch it to see its logs."_s;
    }
    const CommandResult log = co_await runAdb(Adb::log(serial, pid));
    co_return log.checked().text();
}

} // namespace

QCoro::Task<> VardaModel::readLogs()
{
    const auto self = shared_from_this();
    const std::optional<AndroidDevice> device = selected();
    if (!device || !device->ready()) {
        logging = false;
        co_return;
    }
    const QString package = trimmed(packageName());
    if (!package.isEmpty() && !Validation::package(package)) {
        logging = false;
        error = u"Enter a valid package ID or leave it blank for device-wide logs."_s;
        co_return;
    }
    try {
        const QString snapshot = co_await readSnapshot(device->id, package);
        if (selectedID() == device->id)
            logs = snapshot;
    } catch (const std::exception &failure) {
        logging = false;
        error = describe(failure);
    }
}

void VardaModel::exportLogs()
{
    const std::optional<QString> path = m_dialogs->saveLocation(SaveKind::PlainText, u"Varda-logcat.txt"_s);
    if (!path)
        return;
    try {
        saveFile(*path, logs().toUtf8());
    } catch (const std::exception &failure) {
        error = describe(failure);
    }
}

} // namespace varda
