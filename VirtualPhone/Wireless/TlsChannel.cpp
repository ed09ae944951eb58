// TlsChannel: BoringSSL between two memory buffers.
#include "Wireless/TlsChannel.h"

#include <QRandomGenerator>

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/nid.h>
#include <openssl/pool.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr long certificateSeconds = 10L * 365 * 24 * 60 * 60;
constexpr std::size_t pieceSize = std::size_t{16} * 1024;

bssl::UniquePtr<X509> makeCertificate(EVP_PKEY *key)
{
    bssl::UniquePtr<X509> certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), certificateSeconds);
    constexpr std::array<uint8_t, 5> name = {'p', 'h', 'o', 'n', 'e'};
    X509_NAME_add_entry_by_NID(X509_get_subject_name(certificate.get()), NID_commonName, MBSTRING_ASC, name.data(),
                               name.size(), -1, 0);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    X509_set_pubkey(certificate.get(), key);
    X509_sign(certificate.get(), key, EVP_sha256());
    return certificate;
}

/// The key of the first certificate that the other side showed.
KeyModulus peerKey(const SSL *ssl)
{
    const STACK_OF(CRYPTO_BUFFER) *chain = SSL_get0_peer_certificates(ssl);
    if (chain == nullptr || sk_CRYPTO_BUFFER_num(chain) == 0)
        return {};
    const bssl::UniquePtr<X509> certificate(X509_parse_from_buffer(sk_CRYPTO_BUFFER_value(chain, 0)));
    const bssl::UniquePtr<EVP_PKEY> key(certificate ? X509_get_pubkey(certificate.get()) : nullptr);
    const RSA *rsa = key ? EVP_PKEY_get0_RSA(key.get()) : nullptr;
    if (rsa == nullptr)
        return {};
    KeyModulus modulus(static_cast<qsizetype>(BN_num_bytes(RSA_get0_n(rsa))), Qt::Uninitialized);
    BN_bn2bin(RSA_get0_n(rsa), reinterpret_cast<uint8_t *>(modulus.data()));
    return modulus;
}

ssl_verify_result_t verifyPeer(SSL *ssl, uint8_t *alert)
{
    return static_cast<TlsChannel *>(SSL_get_app_data(ssl))->verify(alert);
}

} // namespace

bssl::UniquePtr<SSL_CTX> makeTlsContext()
{
    const bssl::UniquePtr<EC_KEY> curveKey(EC_KEY_new_by_curve_name(NID_X9_62_prime256v1));
    EC_KEY_generate_key(curveKey.get());
    const bssl::UniquePtr<EVP_PKEY> key(EVP_PKEY_new());
    EVP_PKEY_set1_EC_KEY(key.get(), curveKey.get());

    bssl::UniquePtr<SSL_CTX> context(SSL_CTX_new(TLS_method()));
    SSL_CTX_set_min_proto_version(context.get(), TLS1_3_VERSION);
    // A resumed session shows no certificate: a computer that has been forgotten could come back with it.
    SSL_CTX_set_options(context.get(), SSL_OP_NO_TICKET);
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    SSL_CTX_use_certificate(context.get(), makeCertificate(key.get()).get());
    SSL_CTX_set_custom_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, verifyPeer);
    return context;
}

TlsChannel::TlsChannel(SSL_CTX *context, Admission admits)
    : m_ssl(SSL_new(context))
    , m_admits(std::move(admits))
{
    SSL_set_app_data(m_ssl.get(), this);
    SSL_set_bio(m_ssl.get(), BIO_new(BIO_s_mem()), BIO_new(BIO_s_mem()));
    SSL_set_accept_state(m_ssl.get());
}

bool TlsChannel::receive(const QByteArray &wire)
{
    BIO_write(SSL_get_rbio(m_ssl.get()), wire.constData(), static_cast<int>(wire.size()));
    if (!m_open) {
        const int result = SSL_do_handshake(m_ssl.get());
        m_open = result == 1;
        if (!m_open)
            return goesOnAfter(result);
    }
    std::array<char, pieceSize> piece{};
    for (;;) {
        const int size = SSL_read(m_ssl.get(), piece.data(), piece.size());
        if (size <= 0)
            return goesOnAfter(size);
        m_plain.append(piece.data(), size);
    }
}

void TlsChannel::send(const QByteArray &plain)
{
    SSL_write(m_ssl.get(), plain.constData(), static_cast<int>(plain.size()));
}

QByteArray TlsChannel::takeWire()
{
    BIO *out = SSL_get_wbio(m_ssl.get());
    QByteArray wire(static_cast<qsizetype>(BIO_pending(out)), Qt::Uninitialized);
    BIO_read(out, wire.data(), static_cast<int>(wire.size()));
    return wire;
}

QByteArray TlsChannel::takePlain()
{
    return std::exchange(m_plain, {});
}

QByteArray TlsChannel::sharedSecret(const QByteArray &label, qsizetype size) const
{
    QByteArray secret(size, '\0');
    SSL_export_keying_material(m_ssl.get(), reinterpret_cast<uint8_t *>(secret.data()), static_cast<std::size_t>(size),
                               label.constData(), static_cast<std::size_t>(label.size()), nullptr, 0, 0);
    return secret;
}

ssl_verify_result_t TlsChannel::verify(uint8_t *alert)
{
    if (m_admits(peerKey(m_ssl.get())))
        return ssl_verify_ok;
    m_error = u"this computer is not paired"_s;
    *alert = SSL_AD_CERTIFICATE_UNKNOWN;
    return ssl_verify_invalid;
}

bool TlsChannel::goesOnAfter(int result)
{
    const int error = SSL_get_error(m_ssl.get(), result);
    if (error == SSL_ERROR_WANT_READ)
        return true;
    if (error != SSL_ERROR_ZERO_RETURN && m_error.isEmpty()) {
        const char *reason = ERR_reason_error_string(ERR_peek_error());
        m_error = u"TLS: "_s + QString::fromLatin1(reason != nullptr ? reason : "broken off");
    }
    ERR_clear_error();
    return false;
}

} // namespace varda::phone
