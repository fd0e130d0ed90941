#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "bench/pipe/floor_end.h"

namespace pipe_bench {

namespace {

// `result` of the call named, which is -1 on an error.
int Checked(int result, const char* call) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), call);
    return result;
}

}  // namespace

FloorEnd::FloorEnd(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) throw std::system_error(ENAMETOOLONG, std::generic_category(), path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int listener = Checked(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    unlink(path.c_str());  // an earlier run's
    Checked(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    Checked(listen(listener, 0), "listen");
    m_Handle = Checked(accept(listener, nullptr, nullptr), "accept");
    close(listener);
    unlink(path.c_str());
}

FloorEnd::~FloorEnd() {
    close(static_cast<int>(m_Handle));
}

std::size_t FloorEnd::Read(char* buffer, std::size_t size) {
    const ssize_t count = recv(static_cast<int>(m_Handle), buffer, size, 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool FloorEnd::Write(const std::string& bytes) {
    // A blocking stream socket takes all or fails.
    return send(static_cast<int>(m_Handle), bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
}

}  // namespace pipe_bench
