// PairedComputers: adb's own form of an RSA public key.
#include "Wireless/PairedComputers.h"

#include <QtEndian>

#include <algorithm>

namespace varda::phone {

namespace {

// Little-endian: the number of 32-bit words of the modulus, a number for faster arithmetic, the modulus, another number
// as long as the modulus, and the exponent.
constexpr quint32 modulusWords = 64;
constexpr qsizetype modulusStart = 8;
constexpr qsizetype modulusSize = 4LL * modulusWords;
constexpr qsizetype keySize = modulusStart + 2 * modulusSize + 4;

} // namespace

std::optional<Computer> Computer::fromPublicKey(const QByteArray &text)
{
    const qsizetype blank = text.indexOf(' ');
    const QByteArray key = QByteArray::fromBase64(blank < 0 ? text : text.left(blank));
    if (key.size() != keySize || qFromLittleEndian<quint32>(key.constData()) != modulusWords)
        return std::nullopt;
    KeyModulus modulus = key.mid(modulusStart, modulusSize);
    std::reverse(modulus.begin(), modulus.end());
    return Computer{modulus, blank < 0 ? QString() : QString::fromUtf8(text.mid(blank + 1)).trimmed()};
}

} // namespace varda::phone
