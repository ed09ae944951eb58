// Phone: its listening, its states, and who is let in.
#include "Phone.h"

#include "Adb/Stream.h"
#include "Control/ControlCommands.h"
#include "Services/ServiceTable.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr std::array stateNames = {
    std::pair{PhoneState::Device, "device"_L1},     std::pair{PhoneState::Unauthorized, "unauthorized"_L1},
    std::pair{PhoneState::Recovery, "recovery"_L1}, std::pair{PhoneState::Sideload, "sideload"_L1},
    std::pair{PhoneState::Offline, "offline"_L1},
};

constexpr quint16 firstEmulatorPort = 5555;
constexpr quint16 lastEmulatorPort = 5585;

/// Of more hosts that are not let in than that the one that came first has to go.
constexpr qsizetype maxWaiting = 64;

bool isEmulatorPort(quint16 port)
{
    return port >= firstEmulatorPort && port <= lastEmulatorPort && port % 2 == 1;
}

} // namespace

std::optional<PhoneState> phoneState(const QString &name)
{
    for (const auto &[state, text] : stateNames) {
        if (name == text)
            return state;
    }
    return std::nullopt;
}

QString stateName(PhoneState state)
{
    return stateNames.at(static_cast<std::size_t>(state)).second;
}

Phone::Phone(const PhoneOptions &options)
    : m_options(options)
    , m_device(options.model, options.screen, this)
    , m_server([this](QTcpSocket *socket) { take(socket, {}); })
    , m_wireless(*this, [this](QTcpSocket *socket, std::unique_ptr<SecureChannel> channel) {
        take(socket, std::move(channel));
    })
{
    m_clock.start();
    for (const QString &package : options.packages)
        m_device.install(package);
    connect(&m_wireless, &WirelessDebugging::shown, this, [this](const QString &line) {
        if (m_options.onWireless)
            m_options.onWireless(line);
    });
}

Phone::~Phone()
{
    m_server.close();
    breakConnections();
    // Their services use this object, so they must go before its members do.
    qDeleteAll(findChildren<Connection *>(Qt::FindDirectChildrenOnly));
}

QString Phone::listen()
{
    if (!m_log.open(m_options.serviceLog))
        return u"cannot write "_s + m_options.serviceLog;
    if (const auto state = phoneState(m_options.state))
        m_state = *state;
    else
        return u"no such state: "_s + m_options.state;
    for (const QString &command : std::as_const(m_options.commands)) {
        QString reply = execute(command);
        if (!reply.startsWith("ok"_L1))
            return reply;
    }
    if (!m_server.open(m_options.port))
        return u"port %1: %2"_s.arg(m_options.port).arg(m_server.errorString());
    m_port = m_server.serverPort();
    return {};
}

QString Phone::serial() const
{
    return isEmulatorPort(m_port) ? u"emulator-%1"_s.arg(m_port - 1) : u"127.0.0.1:%1"_s.arg(m_port);
}

QString Phone::execute(const QString &command)
{
    return executeControl(*this, command);
}

void Phone::setState(PhoneState state)
{
    if (std::exchange(m_state, state) != state)
        breakConnections();
}

void Phone::authorize()
{
    m_state = PhoneState::Device;
    for (Connection *connection : std::as_const(m_connections))
        connection->accept();
}

void Phone::breakConnections()
{
    const QList<Connection *> connections = m_connections;
    for (Connection *connection : connections)
        connection->breakOff();
}

void Phone::breakWirelessConnections()
{
    const QList<Connection *> connections = m_connections;
    for (Connection *connection : connections) {
        if (connection->hasChannel())
            connection->breakOff();
    }
}

bool Phone::setRefusing(bool refusing)
{
    if (!refusing)
        return m_server.isListening() || m_server.open(m_port);
    m_server.close();
    return true;
}

void Phone::announce(quint16 serverPort)
{
    auto *socket = new QTcpSocket(this);
    connect(socket, &QTcpSocket::connected, socket, [socket, port = m_port] {
        const QByteArray message = "host:emulator:" + QByteArray::number(port);
        socket->write(QByteArray::number(message.size(), 16).rightJustified(4, '0') + message);
        socket->disconnectFromHost();
    });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QTcpSocket::errorOccurred, socket, &QObject::deleteLater);
    socket->connectToHost(QHostAddress::LocalHost, serverPort);
}

qint64 Phone::frame() const
{
    return m_clock.elapsed() * m_options.frameRate / 1000;
}

void Phone::take(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel)
{
    auto *connection = new Connection(socket, std::move(channel), greeting(), banner(), this);
    m_connections.append(connection);
    connection->onOpen = [this](Stream &stream) { return openService(*this, stream); };
    connect(connection, &Connection::authorizationRequested, this, [this](const QByteArray &key) {
        m_log.add(u"authorization-requested"_s, {{u"key"_s, QString::fromUtf8(key)}});
    });
    connect(connection, &Connection::violated, this, [this](const QString &what) {
        m_log.add(u"violation"_s, {{u"what"_s, what}});
    });
    connect(connection, &Connection::ended, this, [this, connection] {
        m_connections.removeAll(connection);
        m_forwards.forget(*connection);
        m_log.add(u"disconnected"_s, {});
    });
    m_log.add(u"connected"_s, {{u"state"_s, stateName(m_state)}});
    QList<Connection *> waiting = m_connections;
    waiting.removeIf([](const Connection *each) { return each->isOnline(); });
    if (waiting.size() > maxWaiting)
        waiting.first()->breakOff();
}

Greeting Phone::greeting() const
{
    switch (m_state) {
    case PhoneState::Unauthorized:
        return Greeting::Challenge;
    case PhoneState::Offline:
        return Greeting::Silence;
    default:
        return Greeting::Accept;
    }
}

QByteArray Phone::banner() const
{
    // An unauthorized phone shows this banner only once it has been authorised.
    const QString kind =
        m_state == PhoneState::Recovery || m_state == PhoneState::Sideload ? stateName(m_state) : u"device"_s;
    const QString name = m_device.identifier();
    return u"%1::ro.product.name=%2;ro.product.model=%3;ro.product.device=%2;features=shell_v2,cmd"_s
        .arg(kind, name.toLower(), m_device.model())
        .toUtf8();
}

} // namespace varda::phone
