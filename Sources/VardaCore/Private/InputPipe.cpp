// A pipe of which our end does not block, and writing to it without SIGPIPE.
#include "Private/InputPipe.h"

#include <QByteArrayView>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace varda {

namespace {

/// Blocks SIGPIPE on this thread for as long as it lives, so that writing to a pipe that nobody reads fails with EPIPE
/// instead, whatever the process does with the signal.
class SigpipeBlock
{
public:
    SigpipeBlock()
    {
        ::sigemptyset(&m_sigpipe);
        ::sigaddset(&m_sigpipe, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &m_sigpipe, &m_previous);
    }
    Q_DISABLE_COPY_MOVE(SigpipeBlock)
    ~SigpipeBlock()
    {
        const timespec now = {};
        while (!m_wasPending && ::sigtimedwait(&m_sigpipe, nullptr, &now) < 0 && errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
    }

private:
    sigset_t m_sigpipe = {};
    sigset_t m_previous = {};
    bool m_wasPending = false;
};

} // namespace

InputPipe::InputPipe(QByteArray input)
    : m_input(std::move(input))
{
    std::array<int, 2> pipe = {-1, -1};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "Cannot make a pipe");
    m_childSide = Descriptor(pipe[0]);
    m_ourSide = Descriptor(pipe[1]);
    ::fcntl(m_ourSide.get(), F_SETFL, O_NONBLOCK);
}

bool InputPipe::write()
{
    const SigpipeBlock block;
    while (m_written < m_input.size()) {
        const QByteArrayView rest = QByteArrayView(m_input).sliced(m_written);
        const ssize_t count = ::write(m_ourSide.get(), rest.data(), static_cast<size_t>(rest.size()));
        if (count >= 0)
            m_written += count;
        else if (errno == EAGAIN)
            return false;
        else if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "Cannot write to a pipe");
    }
    return true;
}

} // namespace varda
