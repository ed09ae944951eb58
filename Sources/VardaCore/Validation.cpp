// The patterns are the whole grammar; parsing the endpoint as a URL is a second guard.
#include "VardaCore/Validation.h"

#include "VardaCore/Text.h"

#include <QRegularExpression>
#include <QUrl>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// The patterns set no limit to the length of a text, but PCRE2's just-in-time compiler does: its stack is small. The
/// interpreter has no such limit.
QRegularExpression compiled(const QString &pattern)
{
    return QRegularExpression(u"(*NO_JIT)"_s + pattern);
}

const QRegularExpression &packagePattern()
{
    static const QRegularExpression pattern = compiled(uR"(^[A-Za-z_][A-Za-z0-9_]*(\.[A-Za-z_][A-Za-z0-9_]*)+$)"_s);
    return pattern;
}

const QRegularExpression &endpointPattern()
{
    static const QRegularExpression pattern = compiled(uR"(^[A-Za-z0-9\[][A-Za-z0-9_.:\[\]-]*:[0-9]+$)"_s);
    return pattern;
}

const QRegularExpression &componentPattern()
{
    static const QRegularExpression pattern = compiled(uR"(^[A-Za-z0-9_.$]+/[A-Za-z0-9_.$]+$)"_s);
    return pattern;
}

const QRegularExpression &pairingCodePattern()
{
    static const QRegularExpression pattern = compiled(uR"(^[0-9]{6}$)"_s);
    return pattern;
}

/// Whether the first match of `pattern` spans all of `text`. The anchors alone are not enough: "$" also matches before
/// a final newline.
bool matchesWhole(const QRegularExpression &pattern, const QString &text)
{
    const QRegularExpressionMatch match = pattern.match(text);
    return match.hasMatch() && match.capturedStart() == 0 && match.capturedEnd() == text.size();
}

} // namespace

bool Validation::package(const QString &value)
{
    return matchesWhole(packagePattern(), value);
}

bool Validation::endpoint(const QString &value)
{
    if (!matchesWhole(endpointPattern(), value))
        return false;
    // QUrl (6.4) computes the port modulo 2^64, so that a very long number may look like a valid port.
    if (QStringView(value).sliced(value.lastIndexOf(u':') + 1).toUShort() == 0)
        return false;
    const QUrl url(u"tcp://"_s + value, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() && url.port() >= 1 && url.port() <= 65535 &&
           url.userInfo().isEmpty() && url.path().isEmpty() && !url.hasQuery() && !url.hasFragment();
}

std::optional<QString> Validation::component(const QString &output, const QString &package)
{
    const QString prefix = package + u'/';
    for (const QStringView line : lines(output)) {
        if (line.startsWith(prefix) && matchesWhole(componentPattern(), line.toString()))
            return line.toString();
    }
    return std::nullopt;
}

bool Validation::pairingCode(const QString &value)
{
    return matchesWhole(pairingCodePattern(), value);
}

} // namespace varda
