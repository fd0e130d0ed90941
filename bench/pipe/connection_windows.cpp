#include <windows.h>

#include <system_error>

#include "bench/pipe/connection.h"

namespace pipe_bench {

namespace {

HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

[[noreturn]] void ThrowLastError(const char* call) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

}  // namespace

bool Connection::TryOpen(const std::string& path) {
    Close();
    // Not overlapped: the system itself waits, which is the shortest way.
    m_Handle = reinterpret_cast<std::intptr_t>(
        CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    return m_Handle != kNone;
}

void Connection::Close() {
    if (m_Handle == kNone) return;
    CloseHandle(Handle(m_Handle));
    m_Handle = kNone;
}

void Connection::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD count = 0;
        if (!WriteFile(Handle(m_Handle), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
            ThrowLastError("WriteFile");
        }
        bytes.remove_prefix(count);
    }
}

std::size_t Connection::Read(char* buffer, std::size_t size) {
    DWORD count = 0;
    if (!ReadFile(Handle(m_Handle), buffer, static_cast<DWORD>(size), &count, nullptr)) ThrowLastError("ReadFile");
    return count;
}

}  // namespace pipe_bench
