// ReverseForwards: a map of device addresses for each connection.
#include "Services/ReverseForwards.h"

#include "Adb/Connection.h"

namespace varda::phone {

bool ReverseForwards::add(Connection &connection, const QByteArray &device, const QByteArray &host, bool mayReplace)
{
    QMap<QByteArray, QByteArray> &forwards = m_forwards[&connection];
    if (forwards.contains(device) && !mayReplace)
        return false;
    forwards.insert(device, host);
    return true;
}

bool ReverseForwards::remove(Connection &connection, const QByteArray &device)
{
    return m_forwards[&connection].remove(device) > 0;
}

Stream *ReverseForwards::connectTo(Connection &connection, const QByteArray &device) const
{
    const QByteArray host = m_forwards.value(&connection).value(device);
    return host.isEmpty() ? nullptr : connection.open(host);
}

} // namespace varda::phone
