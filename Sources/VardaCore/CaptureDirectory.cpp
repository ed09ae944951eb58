// Plain POSIX calls: permissions must hold from the first moment and whatever the umask, and errors must keep their
// number.
#include "VardaCore/CaptureDirectory.h"

#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace varda {

namespace {

constexpr mode_t directoryPermissions = 0700;
constexpr mode_t filePermissions = 0600;

[[noreturn]] void throwError(int number, const std::string &path)
{
    throw std::system_error(number, std::generic_category(), path);
}

/// Whether or not it exists; QDir::tempPath() has no name for a directory that is missing.
std::string temporaryDirectory()
{
    const QByteArray path = qgetenv("TMPDIR");
    return path.isEmpty() ? "/tmp" : path.toStdString();
}

/// A path that no other command has, of this process or another.
std::string newPath(const std::filesystem::path &parent)
{
    return parent / ("varda-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper().toStdString());
}

/// The bytes of `file` that were there when this was called, `limit` at most.
QByteArray readAll(const Descriptor &file, qint64 limit, const std::string &path)
{
    struct stat attributes = {};
    if (::fstat(file.get(), &attributes) != 0)
        throwError(errno, path);
    QByteArray bytes(std::min<qint64>(attributes.st_size, limit), Qt::Uninitialized);
    qsizetype length = 0;
    while (length < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, static_cast<size_t>(bytes.size() - length));
        if (count < 0 && errno != EINTR)
            throwError(errno, path);
        if (count == 0)
            break;
        length += std::max<ssize_t>(count, 0);
    }
    bytes.truncate(length);
    return bytes;
}

} // namespace

CaptureDirectory::CaptureDirectory()
{
    const std::string parent = temporaryDirectory();
    std::error_code failure;
    std::filesystem::create_directories(parent, failure);
    if (failure)
        throw std::system_error(failure, parent);
    m_path = newPath(parent);
    if (::mkdir(m_path.c_str(), directoryPermissions) != 0)
        throwError(errno, m_path);
    // The umask may have taken a permission away; it cannot have added one.
    if (::chmod(m_path.c_str(), directoryPermissions) != 0) {
        const int number = errno;
        remove();
        throwError(number, m_path);
    }
}

CaptureDirectory::~CaptureDirectory()
{
    remove();
}

Descriptor CaptureDirectory::createFile(const char *name) const
{
    const std::string file = path(name);
    Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, filePermissions));
    if (!descriptor || ::fchmod(descriptor.get(), filePermissions) != 0)
        throwError(errno, file);
    return descriptor;
}

std::optional<qint64> CaptureDirectory::size(const char *name) const
{
    struct stat attributes = {};
    if (::lstat(path(name).c_str(), &attributes) != 0)
        return std::nullopt;
    return attributes.st_size;
}

QByteArray CaptureDirectory::read(const char *name, std::optional<qint64> limit) const
{
    const std::string file = path(name);
    // Whatever the command may have put in the file's place, opening it must not block.
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor)
        throwError(errno, file);
    return readAll(descriptor, limit.value_or(std::numeric_limits<qint64>::max()), file);
}

void CaptureDirectory::bound(const char *name, qint64 limit) const noexcept
{
    if (size(name) > limit) [[maybe_unused]]
        const int ignored = ::truncate(path(name).c_str(), limit);
}

void CaptureDirectory::remove() const noexcept
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string CaptureDirectory::path(const char *name) const
{
    return m_path + '/' + name;
}

} // namespace varda
