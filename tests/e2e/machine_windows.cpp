#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <knownfolders.h>
#include <objbase.h>
#include <psapi.h>
#include <shlobj.h>
#include <winternl.h>

#include <algorithm>
#include <vector>

#include "tests/e2e/machine.h"

// Exported by ntdll since Windows XP; no header declares it.
extern "C" NTSTATUS NTAPI NtSuspendProcess(HANDLE process);

namespace e2e {

namespace fs = std::filesystem;

static fs::path LauncherFolder(const KNOWNFOLDERID& knownFolder) {
    wchar_t* text = nullptr;
    SHGetKnownFolderPath(knownFolder, 0, nullptr, &text);
    const fs::path folder = fs::path(text) / "Tollmere Games" / "Launcher";
    CoTaskMemFree(text);
    return folder;
}

fs::path BinFolder() {
    wchar_t path[4096];
    GetModuleFileNameW(nullptr, path, 4096);
    return fs::path(path).parent_path();
}

std::string ProgramFile(const std::string& name) {
    return name + ".exe";
}

const bool kFaultsWork = false;

static std::size_t OpenHandles(std::uint32_t processId) {
    constexpr auto kAllHandles = static_cast<SYSTEM_INFORMATION_CLASS>(16);  // of all processes; no header names it
    std::vector<SYSTEM_HANDLE_INFORMATION> memory(1 << 20);
    NtQuerySystemInformation(kAllHandles, memory.data(), static_cast<ULONG>(memory.size() * sizeof memory[0]), nullptr);
    const SYSTEM_HANDLE_ENTRY* const first = memory[0].Handle;
    return static_cast<std::size_t>(std::count_if(first, first + memory[0].Count,
                                                  [&](const auto& handle) { return handle.OwnerPid == processId; }));
}

Footprint FootprintOf(std::uint32_t processId) {
    PROCESS_MEMORY_COUNTERS memory = {};
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId);
    K32GetProcessMemoryInfo(process, &memory, sizeof memory);
    CloseHandle(process);
    return {OpenHandles(processId), memory.PagefileUsage};
}

bool EndProcess(std::uint32_t processId) {
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, processId);
    const bool ended = TerminateProcess(process, 1);
    CloseHandle(process);
    return ended;
}

void HoldProcess(std::uint32_t processId) {
    const HANDLE process = OpenProcess(PROCESS_SUSPEND_RESUME, FALSE, processId);
    NtSuspendProcess(process);
    CloseHandle(process);
}

Machine::Machine(const fs::path& folder)
    : m_Home(folder / "home"),
      m_LogFile(LauncherFolder(FOLDERID_ProgramData) / "tollmere_steam_helper.log"),
      m_EventFile(LauncherFolder(FOLDERID_LocalAppData) / "steam_events.json") {
    fs::create_directories(m_LogFile.parent_path());
    fs::remove(m_LogFile);
    fs::remove(m_EventFile);
}

Machine::~Machine() = default;

// Below a key that stands for the user's own in this process, and that goes with the session.
void Machine::RegisterSteam(std::uint32_t processId) {
    HKEY key = nullptr;
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\TollmereTest", 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                    nullptr, &key, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, key);
    RegCloseKey(key);
    RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Valve\\Steam\\ActiveProcess", 0, nullptr, REG_OPTION_VOLATILE,
                    KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const DWORD id = processId;
    RegSetValueExW(key, L"pid", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&id), sizeof id);
    RegCloseKey(key);
}

void Machine::LetPass(std::chrono::milliseconds) {}

void Machine::TakeBackTime() {}

}  // namespace e2e
