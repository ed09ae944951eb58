// VirtualPhone: a simulated Android phone that the real adb client talks to, for tests and for trying Varda out.
//
//     VirtualPhone phone;                                  // listens on a free loopback port, in a thread of its own
//     run("adb", {"connect", phone.endpoint()});
//     phone.command("on screencap hang");                  // from now on, screenshots never come
//     QCOMPARE(phone.closed("package 'install'").last()["outcome"], "Success");
//
// Nothing in it needs the caller's event loop: a test may block in a child process while the phone answers it.
#pragma once

#include "PhoneOptions.h"

#include <QJsonObject>
#include <QList>
#include <QThread>

namespace varda {

namespace phone {
class Phone;
}

class VirtualPhone
{
public:
    /// Starts the phone; it listens when this returns, or `errorString` says why not.
    explicit VirtualPhone(const PhoneOptions &options = {});
    /// Breaks all connections and stops listening.
    ~VirtualPhone();
    Q_DISABLE_COPY_MOVE(VirtualPhone)

    /// Empty when the phone listens.
    QString errorString() const { return m_error; }
    quint16 port() const { return m_port; }
    /// What `adb connect` is given: "127.0.0.1:PORT".
    QString endpoint() const;
    /// What adb lists the phone as: its endpoint, or "emulator-N" where the port is one that adb looks at by itself.
    QString serial() const { return m_serial; }

    /// Carries out a control command (see `virtual-phone --help`); returns its reply, "ok …" or "error: …". Blocks
    /// until it has been carried out. May be called from any thread but the phone's own.
    QString command(const QString &line);

    /// The log of services so far, oldest first: objects with "event" and "time", and, for the events "open" and
    /// "close", "service" and "stream". VirtualPhone/README.md names the other members.
    QList<QJsonObject> log() const;
    /// The log's "close" records of the services whose name contains `pattern`: what was asked and how it ended.
    QList<QJsonObject> closed(const QString &pattern) const;

private:
    QThread m_thread;
    phone::Phone *m_phone = nullptr;
    QString m_error;
    QString m_serial;
    quint16 m_port = 0;
};

} // namespace varda
