// WirelessDebugging: the phone's key, its ports and its paired computers.
#include "Wireless/WirelessDebugging.h"

#include "Adb/LoopbackServer.h"
#include "Phone.h"
#include "Wireless/PairedComputers.h"
#include "Wireless/PairingServer.h"
#include "Wireless/TlsChannel.h"

#include <QRandomGenerator>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr quint32 codes = 1'000'000;

QString address(quint16 port)
{
    return port == 0 ? QString() : u"127.0.0.1:%1"_s.arg(port);
}

/// Misbehaves as the rules for the port of that name say; true when the host is not to be answered.
bool misbehave(QTcpSocket &socket, const Fault &fault, QObject *owner)
{
    if (fault.refuse) {
        socket.abort();
        socket.deleteLater();
        return true;
    }
    if (fault.drop) {
        // Connected before anybody reads, it sees each piece that arrives.
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket, [&socket, left = *fault.drop]() mutable {
            left -= socket.bytesAvailable();
            if (left <= 0)
                socket.abort();
        });
    }
    if (fault.hang) {
        socket.setParent(owner);
        QObject::connect(&socket, &QTcpSocket::disconnected, &socket, &QObject::deleteLater);
    }
    return fault.hang;
}

} // namespace

struct WirelessDebugging::Ports
{
    explicit Ports(const std::function<void(QTcpSocket *)> &answer)
        : connection(answer)
    {
    }

    bssl::UniquePtr<SSL_CTX> context = makeTlsContext();
    PairedComputers computers;
    LoopbackServer connection;
    std::unique_ptr<PairingServer> pairing;
    QString code;
};

WirelessDebugging::WirelessDebugging(Phone &phone, Taker take)
    : QObject(&phone)
    , m_phone(phone)
    , m_take(std::move(take))
    , m_ports(std::make_unique<Ports>([this](QTcpSocket *socket) { answer(socket); }))
{
}

WirelessDebugging::~WirelessDebugging() = default;

QString WirelessDebugging::turnOn()
{
    if (!m_ports->connection.isListening() && !m_ports->connection.open())
        return m_ports->connection.errorString();
    showAddresses({});
    Q_EMIT shown(u"connection address: "_s + m_phone.device().wireless().connection);
    return {};
}

void WirelessDebugging::turnOff()
{
    m_ports->connection.close();
    qDeleteAll(findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly));
    hideCode();
}

bool WirelessDebugging::showCode(const QString &code)
{
    if (!m_ports->connection.isListening())
        return false;
    const auto random = [] { return u"%1"_s.arg(QRandomGenerator::system()->bounded(codes), 6, 10, QLatin1Char('0')); };
    QString next = code.isEmpty() ? random() : code;
    while (code.isEmpty() && next == m_ports->code)
        next = random();
    const auto makeChannel = [this] {
        return std::make_unique<TlsChannel>(m_ports->context.get(), [](const KeyModulus &) { return true; });
    };
    const auto trouble = [this](QTcpSocket &socket) {
        return misbehave(socket, m_phone.faults().forService("wireless pairing"), this);
    };
    const QByteArray name = "adb-" + m_phone.device().identifier().toUtf8();
    auto server = std::make_unique<PairingServer>(next, name, makeChannel, trouble, this);
    if (!server->listen())
        return false;
    connect(server.get(), &PairingServer::introduced, this, &WirelessDebugging::pair);
    connect(server.get(), &PairingServer::failed, this, [this](const QString &problem) {
        m_phone.log().add(u"pairing-failed"_s, {{u"problem"_s, problem}});
    });
    // Not at once: the server is still at work when it says so.
    connect(
        server.get(), &PairingServer::usedUp, this,
        [this, used = server.get()] {
            if (m_ports->pairing.get() == used && !(m_phone.options().renewsPairingCodes && showCode()))
                hideCode();
        },
        Qt::QueuedConnection);
    // The former port is given back only now, so that the new one is another.
    m_ports->pairing = std::move(server);
    showAddresses(next);
    Q_EMIT shown(u"pairing address: "_s + m_phone.device().wireless().pairing + u", pairing code: "_s + next);
    return true;
}

void WirelessDebugging::answer(QTcpSocket *socket)
{
    if (misbehave(*socket, m_phone.faults().forService("wireless connection"), this))
        return;
    const auto admits = [this](const KeyModulus &key) { return m_ports->computers.contains(key); };
    m_take(socket, std::make_unique<TlsChannel>(m_ports->context.get(), admits));
}

void WirelessDebugging::hideCode()
{
    m_ports->pairing.reset();
    showAddresses({});
}

void WirelessDebugging::forgetComputers()
{
    m_ports->computers.clear();
}

QStringList WirelessDebugging::computers() const
{
    return m_ports->computers.names();
}

void WirelessDebugging::showAddresses(const QString &code)
{
    m_ports->code = code;
    m_phone.device().setWireless({address(m_ports->connection.serverPort()),
                                  code.isEmpty() ? QString() : address(m_ports->pairing->port()), code});
}

void WirelessDebugging::pair(const QByteArray &publicKey)
{
    const std::optional<Computer> computer = Computer::fromPublicKey(publicKey);
    if (!computer) {
        m_phone.log().add(u"pairing-failed"_s, {{u"problem"_s, u"no RSA key of 2,048 bits"_s}});
        return;
    }
    m_ports->computers.add(*computer);
    m_phone.log().add(u"paired"_s, {{u"computer"_s, computer->name}});
    Q_EMIT shown(u"paired with "_s + computer->name);
}

} // namespace varda::phone
