// The text that a child reads from its standard input, and the pipe that takes it there.
#pragma once

#include "Private/Descriptor.h"

#include <QByteArray>

namespace varda {

/// Feeds one child through a pipe, piece by piece, so that a child that does not read holds up no thread.
///
/// Usage: hand `childSide` to the child, `closeChildSide` after its launch, then `write` whenever `descriptor` takes
/// more, until that was all; destroying the object closes the pipe, which the child reads as the end of its input.
///
/// Threads: use an object from one thread at a time.
class InputPipe
{
public:
    /// Throws std::system_error if no pipe can be made.
    explicit InputPipe(QByteArray input);

    /// The end that the child reads from.
    int childSide() const { return m_childSide.get(); }

    /// Call it when the child has its copy: while this one is open, a child that stops reading goes unnoticed.
    void closeChildSide() { m_childSide.close(); }

    /// The end that is written to; never blocks.
    int descriptor() const { return m_ourSide.get(); }

    /// Writes as much as the pipe takes, and tells whether that was the last of it. Throws std::system_error, with
    /// EPIPE when the child has stopped reading: no SIGPIPE is raised, whatever the process does with that signal.
    bool write();

private:
    const QByteArray m_input;
    qsizetype m_written = 0;
    Descriptor m_childSide;
    Descriptor m_ourSide;
};

} // namespace varda
