#include <windows.h>

#include <algorithm>
#include <system_error>

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/child_process.h"
#include "support/limits.h"
#include "support/system.h"
#include "support/temp_folder.h"

namespace support {

namespace {

std::wstring Wide(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

struct LessWithoutCase {
    bool operator()(const std::wstring& left, const std::wstring& right) const {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

// The block that CreateProcessW takes: "NAME=VALUE" and a NUL each, sorted, and one more NUL.
std::wstring ChangedEnvironment(const Environment& changes) {
    std::map<std::wstring, std::wstring, LessWithoutCase> variables;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; *entry != L'\0'; entry += std::char_traits<wchar_t>::length(entry) + 1) {
        const std::wstring text = entry;
        // The current directories of drives are variables too; their names begin with '='.
        const std::size_t equals = text.find(L'=', 1);
        if (equals != std::wstring::npos) variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : changes) {
        variables.erase(Wide(name));
        if (value) variables[Wide(name)] = Wide(*value);
    }
    std::wstring block;
    for (const auto& [name, value] : variables) block += name + L"=" + value + L'\0';
    return block + L'\0';
}

// The hidden window of the process; null if it has none.
HWND FindMessageWindow(DWORD processId) {
    HWND window = nullptr;
    for (;;) {
        window = FindWindowExW(HWND_MESSAGE, window, L"Tollmere Steam Helper", nullptr);
        DWORD owner = 0;
        if (window == nullptr || (GetWindowThreadProcessId(window, &owner) != 0 && owner == processId)) return window;
    }
}

}  // namespace

struct ChildProcess::State {
    ~State() {
        CloseHandle(m_Process.hThread);
        CloseHandle(m_Process.hProcess);
    }
    bool Ended(std::chrono::milliseconds limit) const {
        return WaitForSingleObject(m_Process.hProcess, static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0;
    }

    PROCESS_INFORMATION m_Process = {};
};

ChildProcess::ChildProcess(const Start& start) : m_State(std::make_unique<State>()) {
    const std::wstring program = start.m_Program.wstring();
    std::vector<std::string> arguments = {ToUtf8(start.m_Program)};
    arguments.insert(arguments.end(), start.m_Arguments.begin(), start.m_Arguments.end());
    std::wstring commandLine = Wide(launcher::CommandLine(arguments));
    std::wstring environment = ChangedEnvironment(start.m_Changes);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    // No handle is inherited: a child that stays behind then keeps nobody waiting for the end of this one's output. Nor
    // does it write into a console that this one has.
    if (!CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                        CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW, environment.data(),
                        start.m_Directory.wstring().c_str(), &startup, &m_State->m_Process)) {
        const int error = static_cast<int>(GetLastError());
        throw std::system_error(error, std::system_category(), start.m_Program.filename().string());
    }
}

ChildProcess::~ChildProcess() {
    if (!IsRunning()) return;
    TerminateProcess(m_State->m_Process.hProcess, 1);
    m_State->Ended(Limit());
}

std::uint32_t ChildProcess::Id() const {
    return m_State->m_Process.dwProcessId;
}

bool ChildProcess::IsRunning() {
    return !m_State->Ended(std::chrono::milliseconds{0});
}

std::optional<int> ChildProcess::WaitForExit() {
    DWORD code = 0;
    if (!m_State->Ended(Limit()) || !GetExitCodeProcess(m_State->m_Process.hProcess, &code)) return std::nullopt;
    return static_cast<int>(code);
}

bool ChildProcess::RequestClose() {
    HWND window = nullptr;
    WaitUntil([&] {
        window = FindMessageWindow(Id());
        return window != nullptr || !IsRunning();
    });
    return window != nullptr && PostMessageW(window, WM_CLOSE, 0, 0) != 0;
}

}  // namespace support
