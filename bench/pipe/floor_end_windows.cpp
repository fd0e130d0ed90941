#include <windows.h>

#include <system_error>

#include "bench/pipe/floor_end.h"

namespace pipe_bench {

namespace {

constexpr DWORD kBufferSize = 65536;  // as the helper's

HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

[[noreturn]] void ThrowLastError(const char* call) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), call);
}

}  // namespace

FloorEnd::FloorEnd(const std::string& path) {
    const HANDLE pipe =
        CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1,
                         kBufferSize, kBufferSize, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) ThrowLastError("CreateNamedPipe");
    if (!ConnectNamedPipe(pipe, nullptr) && GetLastError() != ERROR_PIPE_CONNECTED) ThrowLastError("ConnectNamedPipe");
    m_Handle = reinterpret_cast<std::intptr_t>(pipe);
}

FloorEnd::~FloorEnd() {
    CloseHandle(Handle(m_Handle));
}

std::size_t FloorEnd::Read(char* buffer, std::size_t size) {
    DWORD count = 0;
    return ReadFile(Handle(m_Handle), buffer, static_cast<DWORD>(size), &count, nullptr) ? count : 0;
}

bool FloorEnd::Write(const std::string& bytes) {
    DWORD count = 0;
    return WriteFile(Handle(m_Handle), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
}

}  // namespace pipe_bench
