#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "support/pipe_client.h"

// Natively a pipe is a Unix stream socket named after it.

namespace launcher {

namespace {

using Clock = std::chrono::steady_clock;

std::string PipeDirectory() {
    for (const char* const variable : {"TOLLMERE_PIPE_DIR", "XDG_RUNTIME_DIR"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return "/tmp/tollmere-" + std::to_string(getuid());
}

// True when `events`, or the end of the connection, came before `end`.
bool WaitFor(int socket, short events, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd entry = {socket, events, 0};
        const int ready = poll(&entry, 1, static_cast<int>(std::clamp<long long>(left, 0, 1 << 30)));
        if (ready > 0) return true;
        if (ready < 0 && errno == EINTR) continue;
        return false;
    }
}

bool IsRetry(int error) {
    return error == EAGAIN || error == EINTR;
}

}  // namespace

struct PipeClient::Connection {
    explicit Connection(int descriptor) : m_Socket(descriptor) {}
    ~Connection() { close(m_Socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const int m_Socket;
};

PipeClient::PipeClient() = default;
PipeClient::~PipeClient() = default;
PipeClient::PipeClient(PipeClient&&) noexcept = default;
PipeClient& PipeClient::operator=(PipeClient&&) noexcept = default;

void PipeClient::Close() {
    m_Connection.reset();
}

bool PipeClient::TryOpen(const std::string& name) {
    Close();
    m_FoundBusy = false;
    const std::string path = PipeDirectory() + "/" + name;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);

    // Non-blocking: where the server takes nobody in, the try fails instead of queueing.
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return false;
    auto connection = std::make_unique<Connection>(descriptor);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        m_FoundBusy = errno == ECONNREFUSED || errno == EAGAIN;
        return false;
    }
    m_Connection = std::move(connection);
    return true;
}

std::uint32_t PipeClient::ServerProcessId() const {
    ucred server = {};
    socklen_t size = sizeof server;
    if (!IsOpen() || getsockopt(m_Connection->m_Socket, SOL_SOCKET, SO_PEERCRED, &server, &size) != 0) return 0;
    return static_cast<std::uint32_t>(server.pid);
}

// Nothing tells when a socket takes somebody in again.
bool PipeClient::AwaitTurn(const std::string&, std::chrono::milliseconds) {
    return false;
}

Outcome PipeClient::Write(const std::string& bytes, std::chrono::milliseconds limit) {
    if (!IsOpen()) return Outcome::Lost;
    const Clock::time_point end = Clock::now() + limit;
    std::size_t written = 0;
    while (written < bytes.size()) {
        if (!WaitFor(m_Connection->m_Socket, POLLOUT, end)) return Outcome::TimedOut;
        const ssize_t count =
            send(m_Connection->m_Socket, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
        if (count < 0 && !IsRetry(errno)) return Outcome::Lost;
        if (count > 0) written += static_cast<std::size_t>(count);
    }
    return Outcome::Done;
}

Outcome PipeClient::Read(std::string& bytes, std::chrono::milliseconds limit) {
    if (!IsOpen()) return Outcome::Lost;
    const Clock::time_point end = Clock::now() + limit;
    std::string buffer(65536, '\0');
    for (;;) {
        if (!WaitFor(m_Connection->m_Socket, POLLIN, end)) return Outcome::TimedOut;
        const ssize_t count = recv(m_Connection->m_Socket, buffer.data(), buffer.size(), 0);
        if (count > 0) {
            bytes.append(buffer, 0, static_cast<std::size_t>(count));
            return Outcome::Done;
        }
        if (count == 0 || !IsRetry(errno)) return Outcome::Lost;
    }
}

}  // namespace launcher
