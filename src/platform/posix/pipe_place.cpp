#include "platform/posix/pipe_place.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/posix/environment.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/windows_calls.h"

namespace posix_layer {

namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr char kNamePrefix[] = "\\\\.\\pipe\\";
constexpr char kLockSuffix[] = ".lock";

std::string LockPath(const std::string& socketPath) {
    return socketPath + kLockSuffix;
}

// The folder of last resort. Others can write to /tmp: whatever they have put there under this name is not used.
std::optional<std::string> OwnFolder() {
    const std::string path = "/tmp/tollmere-" + std::to_string(getuid());
    mkdir(path.c_str(), 0700);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != getuid() ||
        (status.st_mode & 0077) != 0)
        return WithLastError(ERROR_ACCESS_DENIED, std::nullopt);
    return path;
}

std::optional<std::string> PipeFolder() {
    if (auto folder = FirstVariable({"TOLLMERE_PIPE_DIR", "XDG_RUNTIME_DIR"})) return folder;
    return OwnFolder();
}

std::optional<std::string> SocketPath(const std::string& pipeName) {
    const std::size_t prefix = sizeof kNamePrefix - 1;
    const bool valid = pipeName.compare(0, prefix, kNamePrefix) == 0 && pipeName.size() > prefix &&
                       pipeName.find('/') == std::string::npos;
    if (!valid) return WithLastError(ERROR_INVALID_NAME, std::nullopt);
    const std::optional<std::string> folder = PipeFolder();
    if (!folder) return std::nullopt;
    const std::string path = *folder + "/" + pipeName.substr(prefix);
    if (path.size() >= sizeof(sockaddr_un::sun_path)) return WithLastError(ERROR_INVALID_NAME, std::nullopt);
    return path;
}

// True if `path` still names the open file: its last owner may have removed it meanwhile.
bool IsStillThere(int descriptor, const std::string& path) {
    struct stat opened, named;
    return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
}

// The locked file's descriptor; -1, with the last error, if somebody else has locked it or it can't be made.
int TakeLock(const std::string& path) {
    for (;;) {
        const int lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnerOnly);
        if (lock < 0) {
            SetLastErrorFromErrno(path);
            return -1;
        }
        if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
            SetLastError(errno == EWOULDBLOCK ? ERROR_PIPE_BUSY : ERROR_GEN_FAILURE);
            close(lock);
            return -1;
        }
        if (IsStillThere(lock, path)) return lock;
        close(lock);
    }
}

// False, with errno, if something is in the way that is no socket.
bool RemoveSocketFile(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return errno == ENOENT;
    errno = EACCES;
    return S_ISSOCK(status.st_mode) && unlink(path.c_str()) == 0;
}

}  // namespace

std::optional<PipePlace> PipePlace::Take(const std::string& pipeName) {
    std::optional<std::string> path = SocketPath(pipeName);
    if (!path) return std::nullopt;
    const int lock = TakeLock(LockPath(*path));
    if (lock < 0) return std::nullopt;
    return PipePlace(std::move(*path), lock);
}

PipePlace::PipePlace(PipePlace&& other) noexcept
    : m_SocketPath(std::move(other.m_SocketPath)), m_Lock(std::exchange(other.m_Lock, -1)) {}

PipePlace::~PipePlace() {
    if (m_Lock < 0) return;
    RemoveSocketFile(m_SocketPath);
    unlink(LockPath(m_SocketPath).c_str());
    // Explicitly: a child that is just being started has a copy of the descriptor, which would keep the lock.
    flock(m_Lock, LOCK_UN);
    close(m_Lock);
}

int PipePlace::Listen() {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_SocketPath.c_str(), m_SocketPath.size() + 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    // The file gets the mode that the socket has before it is bound, so that it is never open to others.
    if (listener >= 0 && RemoveSocketFile(m_SocketPath) && fchmod(listener, kOwnerOnly) == 0 &&
        bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && listen(listener, 0) == 0) {
        return listener;
    }
    SetLastErrorFromErrno(m_SocketPath);
    if (listener >= 0) close(listener);
    return -1;
}

}  // namespace posix_layer
