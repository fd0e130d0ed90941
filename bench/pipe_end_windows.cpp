#include <windows.h>

#include <system_error>
#include <utility>

#include "bench/pipe_end.h"

static HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

static std::intptr_t Checked(HANDLE handle, const std::string& path) {
    if (handle != INVALID_HANDLE_VALUE) return reinterpret_cast<std::intptr_t>(handle);
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), path);
}

bool IsListening(const std::string& path) {
    // The shortest time that can be asked for; 0 would mean the pipe's own.
    return WaitNamedPipeA(path.c_str(), 1) != 0;
}

PipeEnd PipeEnd::Open(const std::string& path) {
    return PipeEnd(
        Checked(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr), path));
}

PipeEnd PipeEnd::Serve(const std::string& path) {
    PipeEnd end(
        Checked(CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1,
                                 kPipeBufferSize, kPipeBufferSize, 0, nullptr),
                path));
    // A client that came first makes this fail, and one that left again shows at the first read.
    ConnectNamedPipe(Handle(end.m_Handle), nullptr);
    return end;
}

PipeEnd::~PipeEnd() {
    if (m_Handle != kNone) CloseHandle(Handle(m_Handle));
}

PipeEnd::PipeEnd(PipeEnd&& other) noexcept : m_Handle(std::exchange(other.m_Handle, kNone)) {}

std::size_t PipeEnd::Read(char* buffer, std::size_t size) {
    DWORD count = 0;
    return ReadFile(Handle(m_Handle), buffer, static_cast<DWORD>(size), &count, nullptr) ? count : 0;
}

bool PipeEnd::Write(std::string_view bytes) {
    DWORD count = 0;
    return WriteFile(Handle(m_Handle), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
}
