// An address that passes is one harmless word that begins with no dash and ends in a port; a pairing code is six
// digits.
#include "Fuzz.h"

#include "VardaCore/Text.h"
#include "VardaCore/Validation.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace varda::fuzz {

namespace {

bool belongsToEndpoint(QChar c)
{
    return isAsciiLetter(c) || isAsciiDigit(c) || u"_.:[]-"_s.contains(c);
}

/// The value of an all-digit text, as far as it matters here.
unsigned portNumber(const QString &digits)
{
    unsigned number = 0;
    for (const QChar digit : digits)
        number = std::min(number * 10 + static_cast<unsigned>(digit.digitValue()), 1000000U);
    return number;
}

void checkAccepted(const QString &value)
{
    require(std::all_of(value.begin(), value.end(), belongsToEndpoint),
            "an address holds only letters of its alphabet");
    require(isAsciiLetter(value.front()) || isAsciiDigit(value.front()) || value.front() == u'[',
            "no address begins with a dash");
    const qsizetype colon = value.lastIndexOf(u':');
    require(colon > 0, "a host stands before the port");
    const QString port = value.mid(colon + 1);
    require(!port.isEmpty() && std::all_of(port.begin(), port.end(), isAsciiDigit), "a port is digits");
    require(portNumber(port) >= 1 && portNumber(port) <= 65535, "a port is between 1 and 65535");
}

/// Host names of plain words: about these there can be no two opinions.
bool isPlainEndpoint(const QString &value)
{
    static const QRegularExpression plain(u"\\A[a-z]{1,20}(\\.[a-z]{1,20}){0,3}:[1-9][0-9]{0,3}\\z"_s);
    return plain.match(value).hasMatch();
}

bool isSixDigits(const QString &value)
{
    return value.size() == 6 && std::all_of(value.begin(), value.end(), isAsciiDigit);
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QString value = text(data, size);
    const bool accepted = varda::Validation::endpoint(value);
    if (accepted)
        checkAccepted(value);
    require(accepted || !isPlainEndpoint(value), "a plain host name and port is accepted");
    require(!accepted || varda::trimmed(value) == value, "what is accepted has nothing to trim");
    require(varda::Validation::pairingCode(value) == isSixDigits(value), "a pairing code is six digits");
    return 0;
}
