// Faults: all rules that fit a service add up; where two contradict each other, the later one counts.
#include "Control/Faults.h"

#include "Shell/ShellSyntax.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

template <typename Value>
void overlay(std::optional<Value> &value, const std::optional<Value> &other)
{
    if (other)
        value = other;
}

/// Applies one action to `fault`; false when there is no such action with such an argument.
bool apply(Fault &fault, const QString &action, const std::optional<QString> &argument)
{
    bool isNumber = false;
    const qint64 number = argument ? argument->toLongLong(&isNumber) : 0;
    isNumber = isNumber && number >= 0;
    const bool alone = !argument;
    if (action == "hang"_L1 && alone)
        return fault.hang = true;
    if (action == "refuse"_L1 && alone)
        return fault.refuse = true;
    if (action == "garble"_L1 && alone)
        return fault.garble = true;
    if (action == "latency"_L1 && isNumber)
        return fault.latency = std::chrono::milliseconds(number), true;
    if (action == "drop"_L1 && isNumber)
        return fault.drop = number, true;
    if (action == "flood"_L1 && isNumber)
        return fault.flood = number, true;
    if (action == "exit"_L1 && isNumber)
        return fault.exitCode = static_cast<int>(number), true;
    if (action == "output"_L1 && argument)
        return fault.output = unescaped(*argument), true;
    if (action == "error"_L1 && argument)
        return fault.error = unescaped(*argument), true;
    return false;
}

} // namespace

QString Faults::add(const QString &pattern, const QStringList &words)
{
    auto rule = std::find_if(m_rules.begin(), m_rules.end(), [&](const Rule &r) { return r.pattern == pattern; });
    Fault fault = rule == m_rules.end() ? Fault() : rule->fault;
    const std::optional<QString> argument = words.size() == 2 ? std::optional(words.at(1)) : std::nullopt;
    if (words.isEmpty() || words.size() > 2 || pattern.isEmpty() || !apply(fault, words.first(), argument))
        return u"no such action: "_s + words.join(u' ');
    if (rule == m_rules.end())
        m_rules.append({pattern, fault});
    else
        rule->fault = fault;
    return {};
}

void Faults::remove(const QString &pattern)
{
    m_rules.removeIf([&](const Rule &rule) { return pattern.isEmpty() || rule.pattern == pattern; });
}

Fault Faults::forService(const QByteArray &service) const
{
    const QString name = QString::fromUtf8(service).remove(u'\'');
    Fault result;
    for (const Rule &rule : m_rules) {
        if (!name.contains(rule.pattern))
            continue;
        result.hang |= rule.fault.hang;
        result.refuse |= rule.fault.refuse;
        result.garble |= rule.fault.garble;
        overlay(result.latency, rule.fault.latency);
        overlay(result.drop, rule.fault.drop);
        overlay(result.flood, rule.fault.flood);
        overlay(result.output, rule.fault.output);
        overlay(result.error, rule.fault.error);
        overlay(result.exitCode, rule.fault.exitCode);
    }
    return result;
}

} // namespace varda::phone
