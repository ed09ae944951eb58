// WirelessDebugging where the TLS library is missing: it cannot be turned on.
#include "Wireless/WirelessDebugging.h"

#include "Phone.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

struct WirelessDebugging::Ports
{
};

WirelessDebugging::WirelessDebugging(Phone &phone, Taker)
    : QObject(&phone)
    , m_phone(phone)
{
}

WirelessDebugging::~WirelessDebugging() = default;

QString WirelessDebugging::turnOn()
{
    return u"built without BoringSSL, there is no wireless debugging"_s;
}

void WirelessDebugging::turnOff() {}

bool WirelessDebugging::showCode(const QString &)
{
    return false;
}

void WirelessDebugging::forgetComputers() {}

QStringList WirelessDebugging::computers() const
{
    return {};
}

} // namespace varda::phone
