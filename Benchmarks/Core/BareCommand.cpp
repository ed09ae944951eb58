// Errors end the program: a floor that failed is none.
#include "BareCommand.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varda::bench {

namespace {

void require(bool held, const char *what)
{
    if (held)
        return;
    std::perror(what);
    std::abort();
}

/// The new file, open for writing.
int create(const std::string &path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    require(file >= 0, path.c_str());
    return file;
}

/// Reads the file with one call and tells its size.
std::int64_t readOnce(const std::string &path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat attributes = {};
    require(file >= 0 && ::fstat(file, &attributes) == 0, path.c_str());
    const auto size = static_cast<size_t>(attributes.st_size);
    // Not filled beforehand, as a buffer that is read into need not be.
    const std::unique_ptr<char[]> bytes(new char[size]);
    require(::read(file, bytes.get(), size) == attributes.st_size, path.c_str());
    ::close(file);
    return attributes.st_size;
}

void spawnAndWait(const std::vector<std::string> &command, int output, int error)
{
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    pid_t pid = 0;
    require(::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ) == 0, arguments[0]);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    require(::waitpid(pid, &status, 0) == pid && status == 0, "waitpid");
}

} // namespace

Written runBare(const std::vector<std::string> &command)
{
    const char *parent = std::getenv("TMPDIR");
    std::string directory = std::string(parent ? parent : "/tmp") + "/bare-XXXXXX";
    require(::mkdtemp(directory.data()) != nullptr, "mkdtemp");
    const std::array<std::string, 2> paths = {directory + "/stdout", directory + "/stderr"};
    const int output = create(paths[0]);
    const int error = create(paths[1]);
    spawnAndWait(command, output, error);
    ::close(output);
    ::close(error);
    const Written written = {readOnce(paths[0]), readOnce(paths[1])};
    for (const std::string &path : paths)
        ::unlink(path.c_str());
    ::rmdir(directory.c_str());
    return written;
}

} // namespace varda::bench
