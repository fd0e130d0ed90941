#include <windows.h>

#include <algorithm>
#include <vector>

#include "support/pipe_client.h"

namespace launcher {

namespace {

constexpr DWORD kBufferSize = 65536;

std::wstring PipePath(const std::string& name) {
    std::wstring path = L"\\\\.\\pipe\\";
    const int size = static_cast<int>(name.size());
    const int wide = MultiByteToWideChar(CP_UTF8, 0, name.data(), size, nullptr, 0);
    const std::size_t prefix = path.size();
    path.resize(prefix + static_cast<std::size_t>(wide));
    MultiByteToWideChar(CP_UTF8, 0, name.data(), size, path.data() + prefix, wide);
    return path;
}

DWORD Milliseconds(std::chrono::milliseconds limit) {
    return static_cast<DWORD>(std::clamp<long long>(limit.count(), 0, INFINITE - 1));
}

}  // namespace

struct PipeClient::Connection {
    explicit Connection(HANDLE pipe) : m_Pipe(pipe) {}
    ~Connection() {
        CloseHandle(m_Pipe);
        if (m_Done != nullptr) CloseHandle(m_Done);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Resets the record for a request that is about to start. The event is reset by the request itself.
    OVERLAPPED* Begin() {
        m_Operation = {};
        m_Operation.hEvent = m_Done;
        return &m_Operation;
    }

    // Takes the three outcomes of a request's start, done, pending and failed, to its end. On return the
    // request is over in every case, so that its buffer may go.
    Outcome Finish(BOOL started, std::chrono::milliseconds limit, DWORD& count) {
        count = 0;
        if (!started && GetLastError() != ERROR_IO_PENDING) return Outcome::Lost;
        bool late = false;
        if (WaitForSingleObject(m_Done, Milliseconds(limit)) != WAIT_OBJECT_0) {
            late = true;
            CancelIoEx(m_Pipe, &m_Operation);
        }
        // A request that was done in the moment of its cancelling counts as done.
        if (GetOverlappedResult(m_Pipe, &m_Operation, &count, TRUE)) return Outcome::Done;
        return late && GetLastError() == ERROR_OPERATION_ABORTED ? Outcome::TimedOut : Outcome::Lost;
    }

    const HANDLE m_Pipe;
    const HANDLE m_Done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    OVERLAPPED m_Operation = {};
    std::vector<char> m_Buffer = std::vector<char>(kBufferSize);
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
    // The server may learn who the client is, but may not act in its name.
    constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    const HANDLE pipe =
        CreateFileW(PipePath(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, kFlags, nullptr);
    m_FoundBusy = pipe == INVALID_HANDLE_VALUE && GetLastError() == ERROR_PIPE_BUSY;
    if (pipe == INVALID_HANDLE_VALUE) return false;
    auto connection = std::make_unique<Connection>(pipe);
    if (connection->m_Done == nullptr) return false;
    m_Connection = std::move(connection);
    return true;
}

std::uint32_t PipeClient::ServerProcessId() const {
    ULONG id = 0;
    return IsOpen() && GetNamedPipeServerProcessId(m_Connection->m_Pipe, &id) ? id : 0;
}

bool PipeClient::AwaitTurn(const std::string& name, std::chrono::milliseconds limit) {
    return WaitNamedPipeW(PipePath(name).c_str(), std::max<DWORD>(Milliseconds(limit), 1)) != 0;
}

Outcome PipeClient::Write(const std::string& bytes, std::chrono::milliseconds limit) {
    if (!IsOpen()) return Outcome::Lost;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + limit;
    std::size_t written = 0;
    while (written < bytes.size()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        const DWORD size = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - written, 1U << 30));
        const BOOL started =
            WriteFile(m_Connection->m_Pipe, bytes.data() + written, size, nullptr, m_Connection->Begin());
        DWORD count = 0;
        const Outcome outcome = m_Connection->Finish(started, left, count);
        if (outcome != Outcome::Done) return outcome;
        written += count;
    }
    return Outcome::Done;
}

Outcome PipeClient::Read(std::string& bytes, std::chrono::milliseconds limit) {
    if (!IsOpen()) return Outcome::Lost;
    std::vector<char>& buffer = m_Connection->m_Buffer;
    const BOOL started = ReadFile(m_Connection->m_Pipe, buffer.data(), kBufferSize, nullptr, m_Connection->Begin());
    DWORD count = 0;
    const Outcome outcome = m_Connection->Finish(started, limit, count);
    // Zero bytes are no end in byte mode, but nothing else can be made of them either.
    if (outcome == Outcome::Done && count == 0) return Outcome::Lost;
    if (outcome == Outcome::Done) bytes.append(buffer.data(), count);
    return outcome;
}

}  // namespace launcher
