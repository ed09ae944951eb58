// Phone: the simulated phone as one object: it listens, keeps the connections, and owns what services work on.
//
// It lives in one thread that runs an event loop. `VirtualPhone` gives it a thread of its own.
#pragma once

#include "Adb/Connection.h"
#include "Adb/LoopbackServer.h"
#include "Control/Faults.h"
#include "Control/ServiceLog.h"
#include "Device/Device.h"
#include "PhoneOptions.h"
#include "Services/ReverseForwards.h"
#include "Wireless/WirelessDebugging.h"

#include <QElapsedTimer>
#include <QHash>

namespace varda::phone {

class MirrorServer;

enum class PhoneState { Device, Unauthorized, Recovery, Sideload, Offline };

/// The state of that name as adb spells it, or nothing.
std::optional<PhoneState> phoneState(const QString &name);
QString stateName(PhoneState state);

class Phone : public QObject
{
    Q_OBJECT

public:
    explicit Phone(const PhoneOptions &options);
    ~Phone() override;
    Q_DISABLE_COPY_MOVE(Phone)

    /// Starts to listen. Empty on success, else why it does not.
    QString listen();
    quint16 port() const { return m_port; }
    /// What adb calls this phone: "emulator-5554" for a port that it finds by itself, else "127.0.0.1:PORT".
    QString serial() const;

    /// Carries out one control command and returns its one-line reply, which begins with "ok" or "error".
    QString execute(const QString &command);

    PhoneState state() const { return m_state; }
    /// A change breaks the connections, as it does on a phone. Hosts that try again meet the new state.
    void setState(PhoneState state);
    /// The owner says yes: the waiting hosts come in without a new connection.
    void authorize();
    void breakConnections();
    /// False when refused and the port could not be taken again.
    bool setRefusing(bool refusing);
    WirelessDebugging &wireless() { return m_wireless; }
    /// Cuts the hosts off that are connected through wireless debugging.
    void breakWirelessConnections();
    qsizetype connections() const { return m_connections.size(); }
    /// Tells an adb server on the loopback address about this phone, as a starting emulator does.
    void announce(quint16 serverPort);

    /// Frames since the phone was switched on, at its frame rate.
    qint64 frame() const;

    const PhoneOptions &options() const { return m_options; }
    QString installsAs() const { return m_options.installsAs; }
    void setInstallsAs(const QString &package) { m_options.installsAs = package; }
    Device &device() { return m_device; }
    Faults &faults() { return m_faults; }
    ServiceLog &log() { return m_log; }
    ReverseForwards &forwards() { return m_forwards; }
    /// Who listens on which local socket of the phone, such as "localabstract:scrcpy". They enter and leave by
    /// themselves.
    QHash<QByteArray, MirrorServer *> &listeners() { return m_listeners; }

private:
    void take(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel);
    Greeting greeting() const;
    QByteArray banner() const;

    PhoneOptions m_options;
    PhoneState m_state = PhoneState::Device;
    quint16 m_port = 0;
    QElapsedTimer m_clock;
    ServiceLog m_log;
    Faults m_faults;
    Device m_device;
    ReverseForwards m_forwards;
    QHash<QByteArray, MirrorServer *> m_listeners;
    LoopbackServer m_server;
    QList<Connection *> m_connections;
    WirelessDebugging m_wireless;
};

} // namespace varda::phone
