// ReverseForwards: the addresses on the phone that lead back to a host ("adb reverse"), per connection.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QMap>

namespace varda::phone {

class Connection;
class Stream;

class ReverseForwards
{
public:
    /// Leads `device` (such as "localabstract:scrcpy") to `host` (such as "tcp:27183") over `connection`. False when it
    /// is taken already and may not be replaced.
    bool add(Connection &connection, const QByteArray &device, const QByteArray &host, bool mayReplace);
    bool remove(Connection &connection, const QByteArray &device);
    void forget(Connection &connection) { m_forwards.remove(&connection); }

    /// Device and host addresses of the connection, sorted by device address.
    QMap<QByteArray, QByteArray> list(Connection &connection) const { return m_forwards.value(&connection); }

    /// Opens a stream to where `device` leads, or returns null where it leads nowhere.
    Stream *connectTo(Connection &connection, const QByteArray &device) const;

private:
    QHash<Connection *, QMap<QByteArray, QByteArray>> m_forwards;
};

} // namespace varda::phone
