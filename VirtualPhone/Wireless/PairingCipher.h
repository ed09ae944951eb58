// PairingCipher: turns a password that both sides know into a key, without showing it to anyone who does not, and
// encrypts with that key.
#pragma once

#include <QByteArray>

#include <openssl/aead.h>
#include <openssl/curve25519.h>

#include <array>
#include <optional>

namespace varda::phone {

class PairingCipher
{
public:
    /// The phone's side of an agreement on `password`.
    explicit PairingCipher(const QByteArray &password);

    /// What the other side needs for its key.
    QByteArray message() const { return m_message; }
    /// Makes the key from the other side's message; false where that is none. Whether the passwords were the same shows
    /// only at the first `open`. To be called once.
    bool agree(const QByteArray &theirMessage);

    /// Encrypts. There must be a key.
    QByteArray seal(const QByteArray &plain);
    /// Decrypts; nothing where it was sealed with another key, out of order, or changed on the way. There must be a
    /// key.
    std::optional<QByteArray> open(const QByteArray &sealed);

private:
    bssl::UniquePtr<SPAKE2_CTX> m_agreement;
    QByteArray m_message;
    bssl::UniquePtr<EVP_AEAD_CTX> m_key;
    quint64 m_sealed = 0;
    quint64 m_opened = 0;
};

} // namespace varda::phone
