// VardaModel: pairing with a phone over Wi-Fi, and connecting to it.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/Tools.h"
#include "VardaCore/Text.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/Validation.h"

#include <algorithm>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<QString> pairWith(QString endpoint, QString code)
{
    const CommandResult result = co_await runAdb(Adb::pair(endpoint), code);
    const QString output = result.checked().text();
    if (!output.contains(u"successfully paired"_s, Qt::CaseInsensitive)) {
        QString answer = output + result.error;
        throw ToolError::message(answer.replace(code, u"[redacted]"_s));
    }
    co_return u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s;
}

QCoro::Task<QString> connectTo(std::shared_ptr<VardaModel> self, QString endpoint)
{
    const CommandResult result = co_await runAdb(Adb::connect(endpoint));
    const QString output = result.checked().text();
    if (!output.contains(u"connected to"_s))
        throw ToolError::message(output + result.error);
    co_await self->refresh();
    const QList<AndroidDevice> &devices = self->devices();
    const bool listed =
        std::any_of(devices.begin(), devices.end(), [&](const AndroidDevice &each) { return each.id == endpoint; });
    self->selectedID = listed ? endpoint : self->selectedID();
    co_return trimmed(output);
}

} // namespace

void VardaModel::pair()
{
    const QString endpoint = trimmed(pairingEndpoint());
    const QString code = pairingCode();
    if (!Validation::endpoint(endpoint) || !Validation::pairingCode(code)) {
        error =
            u"Use the pairing IP:port and six-digit code shown in Android Wireless debugging → Pair with pairing code."_s;
        return;
    }
    pairingCode = QString(); // even if the action is dropped, so that the code does not stay on the screen
    run(u"Pairing with your Android phone…"_s, [endpoint, code] { return pairWith(endpoint, code); });
}

void VardaModel::connect()
{
    const QString endpoint = trimmed(connectEndpoint());
    if (!Validation::endpoint(endpoint)) {
        error = u"Enter the phone’s wireless connection address in host:port format."_s;
        return;
    }
    run(u"Connecting over Wi-Fi…"_s, [self = shared_from_this(), endpoint] { return connectTo(self, endpoint); });
}

} // namespace varda
