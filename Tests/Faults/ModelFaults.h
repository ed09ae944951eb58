// ModelFaults: what can go wrong with one command, and how a user learns of it.
#pragma once

#include "Steps.h"

namespace varda::test {

struct ModelFault
{
    QString name;
    /// What is told, with "…" for the path of a capture file or of a tool; absent where nobody need be told.
    std::optional<QString> sentence;
    /// Before the step starts.
    std::function<void(const Step &, StandInTools &)> arrange;
    /// Again and again until the step has ended.
    std::function<void(const Step &, StandInTools &)> meanwhile = [](const Step &, StandInTools &) {};
    /// Whether the step can meet it.
    std::function<bool(const Step &)> concerns = [](const Step &) { return true; };
    /// A system call was made to fail, and has to have been made.
    bool injected = false;
    /// A matter of the exit status alone, which a step may not look at.
    bool exitStatusOnly = false;
};

/// Faults that are told in a sentence of their own, or not at all, whatever the step.
QList<ModelFault> modelFaults();

/// A tool that exits with status 0 and prints `answer`: what becomes of it depends on the step.
ModelFault answering(const QString &name, const QByteArray &answer);

} // namespace varda::test
