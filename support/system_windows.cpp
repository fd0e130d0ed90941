#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>
#include <tlhelp32.h>

#include <memory>

#include "support/system.h"

namespace support {

namespace {

std::string ToUtf8(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

struct Closer {
    void operator()(void* handle) const { CloseHandle(handle); }
};

}  // namespace

std::vector<std::string> Arguments(int, char**) {
    int count = 0;
    LPWSTR* const split = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; split != nullptr && i < count; ++i) arguments.push_back(ToUtf8(split[i]));
    LocalFree(split);
    return arguments;
}

// Not the C runtime's copy, which doesn't follow SetEnvironmentVariable.
std::optional<std::string> Variable(const char* name) {
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    std::wstring value(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
    if (value.empty()) return std::nullopt;
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return ToUtf8(value);
}

std::uint32_t ProcessId() {
    return GetCurrentProcessId();
}

std::uint32_t ParentProcessId() {
    const HANDLE handle = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (handle == INVALID_HANDLE_VALUE) return 0;
    const std::unique_ptr<void, Closer> snapshot(handle);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(handle, &entry); more; more = Process32NextW(handle, &entry)) {
        if (entry.th32ProcessID == GetCurrentProcessId()) return entry.th32ParentProcessID;
    }
    return 0;
}

void PrepareStandardStreams() {
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

}  // namespace support
