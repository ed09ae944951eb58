// WirelessDebugging: what Android calls so: a port for paired computers, and now and then one for pairing.
#pragma once

#include "Adb/SecureChannel.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class QTcpSocket;

namespace varda::phone {

class Phone;

class WirelessDebugging : public QObject
{
    Q_OBJECT

public:
    /// Takes over a connected socket and the encryption that it is to have.
    using Taker = std::function<void(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel)>;

    /// `take` is handed whoever comes to the connection port.
    WirelessDebugging(Phone &phone, Taker take);
    ~WirelessDebugging() override;
    Q_DISABLE_COPY_MOVE(WirelessDebugging)

    /// Opens a connection port, another one each time. Empty on success, else why there is none.
    QString turnOn();
    /// Closes both ports. Who has been let in stays so.
    void turnOff();

    /// Shows a new code, or the given one of six digits, and opens a new pairing port. False unless turned on.
    bool showCode(const QString &code = {});

    /// Nobody is paired any more. Who is connected stays so.
    void forgetComputers();
    /// The paired computers' names.
    QStringList computers() const;

Q_SIGNALS:
    /// Something to be read on the phone has changed: what, in one line.
    void shown(const QString &line);

private:
    struct Ports;

    /// Answers whoever comes to the connection port.
    void answer(QTcpSocket *socket);
    void hideCode();
    void showAddresses(const QString &code);
    void pair(const QByteArray &publicKey);

    Phone &m_phone;
    const Taker m_take;
    std::unique_ptr<Ports> m_ports;
};

} // namespace varda::phone
