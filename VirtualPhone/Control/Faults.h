// Faults: rules by which services misbehave on purpose. A rule applies to every service whose name contains its pattern
// (single quotes in the name are ignored, so "package install" matches "exec:cmd package 'install' '-r' -S 12").
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace varda::phone {

/// What is wrong with one service. The members that are set apply together.
struct Fault
{
    bool hang = false;   ///< accepted, then never a word and never a byte read
    bool refuse = false; ///< closed instead of opened
    bool garble = false; ///< the answer is bytes that are no text
    std::optional<std::chrono::milliseconds> latency;
    std::optional<qint64> drop;  ///< the connection breaks after so many bytes in one direction
    std::optional<qint64> flood; ///< the answer is so many bytes of filler
    std::optional<QByteArray> output;
    std::optional<QByteArray> error;
    std::optional<int> exitCode;

    /// Whether a command is to answer by this rule instead of by its own program.
    bool replacesAnswer() const { return garble || flood || output || error || exitCode; }
};

class Faults
{
public:
    /// Adds to the rule for `pattern`. `words` is an action and its argument: "hang", "refuse", "garble", "latency MS",
    /// "drop BYTES", "flood BYTES", "output TEXT", "error TEXT", "exit CODE". Returns what is wrong with them, if
    /// anything.
    QString add(const QString &pattern, const QStringList &words);

    /// Forgets the rule for `pattern`, or all where it is empty.
    void remove(const QString &pattern);

    /// All rules that match `service`, laid over each other in the order in which their patterns were added.
    Fault forService(const QByteArray &service) const;

    /// Delay of every service that no rule slows down by itself.
    std::chrono::milliseconds latency{0};

private:
    struct Rule
    {
        QString pattern;
        Fault fault;
    };
    QList<Rule> m_rules;
};

} // namespace varda::phone
