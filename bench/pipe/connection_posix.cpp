#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "bench/pipe/connection.h"

namespace pipe_bench {

namespace {

int Descriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

}  // namespace

bool Connection::TryOpen(const std::string& path) {
    Close();
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return false;
    m_Handle = descriptor;
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return true;
    Close();
    return false;
}

void Connection::Close() {
    if (m_Handle == kNone) return;
    close(Descriptor(m_Handle));
    m_Handle = kNone;
}

void Connection::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(Descriptor(m_Handle), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0) throw std::system_error(errno, std::generic_category(), "send");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::size_t Connection::Read(char* buffer, std::size_t size) {
    const ssize_t count = recv(Descriptor(m_Handle), buffer, size, 0);
    if (count < 0) throw std::system_error(errno, std::generic_category(), "recv");
    if (count == 0) throw std::system_error(ECONNRESET, std::generic_category(), "recv");
    return static_cast<std::size_t>(count);
}

}  // namespace pipe_bench
