#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>

#include "bench/pipe_end.h"

// `result`, which is -1 on an error.
static int Checked(int result, const std::string& path) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), path);
    return result;
}

static int MakeSocket(const std::string& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) throw std::system_error(ENAMETOOLONG, std::generic_category(), path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return Checked(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), path);
}

// The kernel's table of sockets has the flags of each, and behind them its path.
bool IsListening(const std::string& path) {
    std::ifstream table("/proc/net/unix");
    for (std::string line; std::getline(table, line);) {
        if (line.ends_with(" " + path) && line.find(" 00010000 ") != std::string::npos) return true;
    }
    return false;
}

PipeEnd PipeEnd::Open(const std::string& path) {
    sockaddr_un address;
    PipeEnd end(MakeSocket(path, address));
    Checked(connect(static_cast<int>(end.m_Handle), reinterpret_cast<const sockaddr*>(&address), sizeof address), path);
    return end;
}

PipeEnd PipeEnd::Serve(const std::string& path) {
    sockaddr_un address;
    const PipeEnd listener(MakeSocket(path, address));
    const int descriptor = static_cast<int>(listener.m_Handle);
    unlink(path.c_str());  // the last client's
    Checked(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), path);
    Checked(listen(descriptor, 0), path);
    return PipeEnd(Checked(accept(descriptor, nullptr, nullptr), path));
}

PipeEnd::~PipeEnd() {
    if (m_Handle != kNone) close(static_cast<int>(m_Handle));
}

PipeEnd::PipeEnd(PipeEnd&& other) noexcept : m_Handle(std::exchange(other.m_Handle, kNone)) {}

std::size_t PipeEnd::Read(char* buffer, std::size_t size) {
    const ssize_t count = recv(static_cast<int>(m_Handle), buffer, size, 0);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool PipeEnd::Write(std::string_view bytes) {
    // A blocking stream socket takes all or fails.
    return send(static_cast<int>(m_Handle), bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
}
