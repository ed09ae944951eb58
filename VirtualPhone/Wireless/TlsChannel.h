// TlsChannel: the phone's side of TLS 1.3, with certificates on both sides.
#pragma once

#include "Adb/SecureChannel.h"

#include <openssl/ssl.h>

#include <functional>

namespace varda::phone {

/// The modulus of an RSA key, highest byte first: what tells one computer's key from another's.
using KeyModulus = QByteArray;

/// A new private key of the phone with a certificate that it signed itself, ready to serve channels.
bssl::UniquePtr<SSL_CTX> makeTlsContext();

class TlsChannel : public SecureChannel
{
public:
    /// Asked about the key of the other side's certificate, empty where that is no RSA key. False ends the handshake.
    using Admission = std::function<bool(const KeyModulus &key)>;

    /// `context` comes from makeTlsContext.
    TlsChannel(SSL_CTX *context, Admission admits);

    bool receive(const QByteArray &wire) override;
    void send(const QByteArray &plain) override;
    QByteArray takeWire() override;
    QByteArray takePlain() override;
    bool isOpen() const override { return m_open; }
    QByteArray sharedSecret(const QByteArray &label, qsizetype size) const override;
    QString errorString() const override { return m_error; }

    /// Called by the handshake.
    ssl_verify_result_t verify(uint8_t *alert);

private:
    /// Whether the channel lives on after a call that returned `result`.
    bool goesOnAfter(int result);

    bssl::UniquePtr<SSL> m_ssl;
    const Admission m_admits;
    QByteArray m_plain;
    QString m_error;
    bool m_open = false;
};

} // namespace varda::phone
