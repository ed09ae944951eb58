// PairingCipher: SPAKE2, HKDF with SHA-256, and AES-128-GCM with a counter as its nonce.
#include "Wireless/PairingCipher.h"

#include <QtEndian>

#include <openssl/digest.h>
#include <openssl/hkdf.h>

#include <string_view>

namespace varda::phone {

namespace {

using namespace std::string_view_literals;

// The names count with their terminators, the purpose of the key without.
constexpr auto clientName = "adb pair client\0"sv;
constexpr auto serverName = "adb pair server\0"sv;
constexpr auto keyPurpose = "adb pairing_auth aes-128-gcm key"sv;
constexpr std::size_t keySize = 16;
constexpr std::size_t nonceSize = 12;

const uint8_t *bytes(const char *text)
{
    return reinterpret_cast<const uint8_t *>(text);
}
std::size_t length(const QByteArray &text)
{
    return static_cast<std::size_t>(text.size());
}

std::array<uint8_t, nonceSize> nonce(quint64 number)
{
    std::array<uint8_t, nonceSize> result{};
    qToLittleEndian(number, result.data());
    return result;
}

} // namespace

PairingCipher::PairingCipher(const QByteArray &password)
    : m_agreement(SPAKE2_CTX_new(spake2_role_bob, bytes(serverName.data()), serverName.size(), bytes(clientName.data()),
                                 clientName.size()))
    , m_message(SPAKE2_MAX_MSG_SIZE, Qt::Uninitialized)
{
    std::size_t size = 0;
    SPAKE2_generate_msg(m_agreement.get(), reinterpret_cast<uint8_t *>(m_message.data()), &size, length(m_message),
                        bytes(password.constData()), length(password));
    m_message.truncate(static_cast<qsizetype>(size));
}

bool PairingCipher::agree(const QByteArray &theirMessage)
{
    std::array<uint8_t, SPAKE2_MAX_KEY_SIZE> material{};
    std::size_t size = 0;
    if (SPAKE2_process_msg(m_agreement.get(), material.data(), &size, material.size(), bytes(theirMessage.constData()),
                           length(theirMessage)) != 1)
        return false;
    std::array<uint8_t, keySize> key{};
    HKDF(key.data(), key.size(), EVP_sha256(), material.data(), size, nullptr, 0, bytes(keyPurpose.data()),
         keyPurpose.size());
    m_key.reset(EVP_AEAD_CTX_new(EVP_aead_aes_128_gcm(), key.data(), key.size(), EVP_AEAD_DEFAULT_TAG_LENGTH));
    return true;
}

QByteArray PairingCipher::seal(const QByteArray &plain)
{
    QByteArray sealed(plain.size() + EVP_AEAD_MAX_OVERHEAD, Qt::Uninitialized);
    std::size_t size = 0;
    const auto number = nonce(m_sealed++);
    EVP_AEAD_CTX_seal(m_key.get(), reinterpret_cast<uint8_t *>(sealed.data()), &size, length(sealed), number.data(),
                      number.size(), bytes(plain.constData()), length(plain), nullptr, 0);
    sealed.truncate(static_cast<qsizetype>(size));
    return sealed;
}

std::optional<QByteArray> PairingCipher::open(const QByteArray &sealed)
{
    QByteArray plain(sealed.size(), Qt::Uninitialized);
    std::size_t size = 0;
    const auto number = nonce(m_opened++);
    if (EVP_AEAD_CTX_open(m_key.get(), reinterpret_cast<uint8_t *>(plain.data()), &size, length(plain), number.data(),
                          number.size(), bytes(sealed.constData()), length(sealed), nullptr, 0) != 1)
        return std::nullopt;
    plain.truncate(static_cast<qsizetype>(size));
    return plain;
}

} // namespace varda::phone
