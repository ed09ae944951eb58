// Plain POSIX calls: permissions must hold from the first moment and whatever the umask, and errors must keep their
// number.
#include "Private/CaptureDirectory.h"

#include "VardaCore/Text.h"

#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varda {

namespace {

constexpr mode_t directoryPermissions = 0700;
constexpr mode_t filePermissions = 0600;

/// Bytes of a text that are read and decoded at a time: few enough to stay in the processor's cache.
constexpr qint64 readingBlock = 65'536;

[[noreturn]] void throwError(int number, const std::string &path)
{
    throw std::system_error(number, std::generic_category(), path);
}

/// Makes the directory `path` for this user only. Gives 0 or the error number.
int makePrivate(const std::string &path)
{
    if (::mkdir(path.c_str(), directoryPermissions) != 0)
        return errno;
    // The umask may have taken a permission away; it cannot have added one.
    if (::chmod(path.c_str(), directoryPermissions) == 0)
        return 0;
    const int error = errno;
    ::rmdir(path.c_str());
    return error;
}

/// Makes `path` and the directories above it if they are missing. Gives 0 or the error number.
int makeMissing(const std::filesystem::path &path)
{
    int error = makePrivate(path);
    if (error == ENOENT && path.has_parent_path()) {
        error = makeMissing(path.parent_path());
        if (error == 0)
            error = makePrivate(path);
    }
    return error == EEXIST ? 0 : error;
}

/// A path that no other command has, of this process or another.
std::string newPath(const std::filesystem::path &parent)
{
    return parent / ("varda-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper().toStdString());
}

/// The size of `file` in bytes now.
qint64 sizeOf(const Descriptor &file, const std::string &path)
{
    struct stat attributes = {};
    if (::fstat(file.get(), &attributes) != 0)
        throwError(errno, path);
    return attributes.st_size;
}

/// Reads the next bytes of `file`, `room` at most, into `bytes`, and returns their number; 0 at the end.
qsizetype readNext(const Descriptor &file, char *bytes, qsizetype room, const std::string &path)
{
    for (;;) {
        const ssize_t count = ::read(file.get(), bytes, static_cast<size_t>(room));
        if (count >= 0)
            return count;
        if (errno != EINTR)
            throwError(errno, path);
    }
}

} // namespace

/// Not QDir::tempPath(), which is empty if the directory does not exist.
std::filesystem::path CaptureDirectory::temporaryDirectory()
{
    const QByteArray path = qgetenv("TMPDIR");
    return path.isEmpty() ? "/tmp" : path.toStdString();
}

CaptureDirectory::CaptureDirectory(const std::filesystem::path &parent)
    : m_path(newPath(parent))
{
    if (const int error = makeMissing(parent))
        throwError(error, parent);
    if (const int error = makePrivate(m_path))
        throwError(error, m_path);
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
    const Descriptor file = open(name);
    const qint64 size = sizeOf(file, path(name));
    QByteArray bytes(std::min(size, limit.value_or(size)), Qt::Uninitialized);
    qsizetype length = 0;
    while (length < bytes.size()) {
        const qsizetype count = readNext(file, bytes.data() + length, bytes.size() - length, path(name));
        if (count == 0)
            break;
        length += count;
    }
    bytes.truncate(length);
    return bytes;
}

QString CaptureDirectory::readText(const char *name) const
{
    const Descriptor file = open(name);
    qint64 left = sizeOf(file, path(name));
    Utf8Decoder decoder(left);
    QByteArray block(std::min(left, readingBlock), Qt::Uninitialized);
    while (left > 0) {
        const qsizetype count = readNext(file, block.data(), std::min(left, readingBlock), path(name));
        if (count == 0)
            break;
        decoder.append(QByteArrayView(block).first(count));
        left -= count;
    }
    return decoder.finish();
}

void CaptureDirectory::remove() const noexcept
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Descriptor CaptureDirectory::open(const char *name) const
{
    const std::string file = path(name);
    // Whatever the command may have put in the file's place, opening it must not block.
    Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor)
        throwError(errno, file);
    return descriptor;
}

std::string CaptureDirectory::path(const char *name) const
{
    return m_path + '/' + name;
}

} // namespace varda
