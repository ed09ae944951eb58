// Ownership of a file descriptor.
#pragma once

#include <QtGlobal>

#include <utility>

#include <unistd.h>

namespace varda {

/// Owns one file descriptor and closes it, ignoring errors; -1 stands for none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        other.close();
        return *this;
    }
    Q_DISABLE_COPY(Descriptor)
    ~Descriptor() { close(); }

    int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

    void close()
    {
        if (m_descriptor >= 0)
            ::close(std::exchange(m_descriptor, -1));
    }

private:
    int m_descriptor = -1;
};

} // namespace varda
