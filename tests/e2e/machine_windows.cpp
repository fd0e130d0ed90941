#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <knownfolders.h>
#include <objbase.h>
#include <psapi.h>
#include <shlobj.h>
#include <winternl.h>

#include <algorithm>

#include "tests/e2e/machine.h"

namespace e2e {

namespace fs = std::filesystem;

namespace {

fs::path LauncherFolder(const KNOWNFOLDERID& knownFolder) {
    wchar_t* text = nullptr;
    SHGetKnownFolderPath(knownFolder, 0, nullptr, &text);
    const fs::path folder = fs::path(text) / "Tollmere Games" / "Launcher";
    CoTaskMemFree(text);
    return folder;
}

// All handles of all processes, as the system tells them. The headers don't declare the form.
struct SystemHandle {
    DWORD processId;
    BYTE type;
    BYTE flags;
    WORD handle;
    void* object;
    DWORD access;
};
struct SystemHandles {
    ULONG count;
    SystemHandle handles[1];
};
constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
constexpr LONG kInfoLengthMismatch = static_cast<LONG>(0xC0000004);

}  // namespace

fs::path BinFolder() {
    wchar_t path[4096];
    GetModuleFileNameW(nullptr, path, 4096);
    return fs::path(path).parent_path();
}

std::string ProgramFile(const std::string& name) {
    return name + ".exe";
}

std::vector<fs::path> WorkingStandIns() {
    return {BinFolder() / "steam_api64.dll", BinFolder() / "stand_in_variants" / "steam_api64_msvc.dll"};
}

static std::size_t OpenHandles(std::uint32_t processId) {
    std::vector<std::uint64_t> memory(1 << 12);
    ULONG needed = 0;
    while (NtQuerySystemInformation(kSystemHandleInformation, memory.data(),
                                    static_cast<ULONG>(memory.size() * sizeof memory[0]),
                                    &needed) == kInfoLengthMismatch) {
        memory.resize(memory.size() * 2);
    }
    const auto* const all = reinterpret_cast<const SystemHandles*>(memory.data());
    return static_cast<std::size_t>(
        std::count_if(all->handles, all->handles + all->count,
                      [&](const SystemHandle& handle) { return handle.processId == processId; }));
}

Footprint FootprintOf(std::uint32_t processId) {
    PROCESS_MEMORY_COUNTERS memory = {};
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId);
    K32GetProcessMemoryInfo(process, &memory, sizeof memory);
    CloseHandle(process);
    return {OpenHandles(processId), memory.PagefileUsage};
}

bool IsProcessRunning(std::uint32_t processId) {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
    if (process == nullptr) return false;
    const bool isRunning = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return isRunning;
}

void EndProcess(std::uint32_t processId) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, processId);
    if (process == nullptr) return;
    TerminateProcess(process, 1);
    CloseHandle(process);
}

Machine::Machine(const fs::path&)
    : m_LogFile(LauncherFolder(FOLDERID_ProgramData) / "tollmere_steam_helper.log"),
      m_EventFile(LauncherFolder(FOLDERID_LocalAppData) / "steam_events.json") {
    fs::create_directories(m_LogFile.parent_path());
    fs::remove(m_LogFile);
    fs::remove(m_EventFile);
}

Machine::~Machine() = default;

void Machine::LetPass(std::chrono::milliseconds) {}

void Machine::TakeBackTime() {}

}  // namespace e2e
