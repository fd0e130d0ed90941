// The process list and what it tells of another process.

#include <dirent.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

// The program tells the call this size.
static_assert(sizeof(PROCESSENTRY32W) == 568);

namespace {

class Snapshot : public Object {
  public:
    explicit Snapshot(std::vector<PROCESSENTRY32W> entries) : m_Entries(std::move(entries)) {}

    BOOL Next(PROCESSENTRY32W* entry, bool fromStart) {
        if (entry->dwSize != sizeof *entry) return WithLastError(ERROR_BAD_LENGTH, FALSE);
        const std::lock_guard lock(m_Lock);
        if (fromStart) m_Next = 0;
        if (m_Next == m_Entries.size()) return WithLastError(ERROR_NO_MORE_FILES, FALSE);
        *entry = m_Entries[m_Next++];
        return TRUE;
    }

  private:
    std::mutex m_Lock;
    const std::vector<PROCESSENTRY32W> m_Entries;
    std::size_t m_Next = 0;
};

struct OtherProcess : Object {
    explicit OtherProcess(DWORD processId) : id(processId) {}
    const DWORD id;
};

// Nothing if the process has gone meanwhile.
std::optional<PROCESSENTRY32W> ReadEntry(DWORD id) {
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    // Not by the buffer's iterators: they throw if the process goes after its file has been opened.
    std::string text;
    std::getline(file, text, '\0');
    // ID (NAME) STATE PARENT ...; the name may hold anything, parentheses too.
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close + 4 > text.size()) return std::nullopt;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    entry.cntThreads = 1;
    entry.th32ProcessID = id;
    entry.th32ParentProcessID = static_cast<DWORD>(std::strtoul(text.c_str() + close + 4, nullptr, 10));
    const std::u16string name = ToWide(text.substr(open + 1, close - open - 1));
    std::copy_n(name.c_str(), std::min<std::size_t>(name.size(), MAX_PATH - 1), entry.szExeFile);
    return entry;
}

std::vector<PROCESSENTRY32W> ReadProcessList() {
    std::vector<PROCESSENTRY32W> entries;
    DIR* const folder = opendir("/proc");
    if (folder == nullptr) return entries;
    while (const dirent* const item = readdir(folder)) {
        const DWORD id = static_cast<DWORD>(std::strtoul(item->d_name, nullptr, 10));
        const std::optional<PROCESSENTRY32W> entry = id == 0 ? std::nullopt : ReadEntry(id);
        if (entry) entries.push_back(*entry);
    }
    closedir(folder);
    return entries;
}

}  // namespace

HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return INVALID_HANDLE_VALUE;
    if (flags != TH32CS_SNAPPROCESS) return WithLastError(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    return AddHandle(std::make_shared<Snapshot>(ReadProcessList()));
}

BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<Snapshot>(snapshot);
    return object != nullptr && object->Next(entry, true);
}

BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) {
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<Snapshot>(snapshot);
    return object != nullptr && object->Next(entry, false);
}

HANDLE OpenProcess(DWORD, BOOL, DWORD processId) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return nullptr;
    if (processId == 0 || kill(static_cast<pid_t>(processId), 0) != 0)
        return WithLastError(processId != 0 && errno == EPERM ? ERROR_ACCESS_DENIED : ERROR_INVALID_PARAMETER, nullptr);
    return AddHandle(std::make_shared<OtherProcess>(processId));
}

BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, DWORD* needed) {
    if (Faulted(__func__)) return FALSE;
    if (Find<OtherProcess>(process) == nullptr) return FALSE;
    // One module, the executable; there is nothing behind its handle.
    *needed = sizeof(HMODULE);
    if (size >= sizeof(HMODULE)) *modules = reinterpret_cast<HMODULE>(process);
    return TRUE;
}

DWORD K32GetModuleFileNameExW(HANDLE process, HMODULE, LPWSTR path, DWORD size) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    const auto object = Find<OtherProcess>(process);
    if (object == nullptr) return 0;
    const std::string file = ReadLink("/proc/" + std::to_string(object->id) + "/exe");
    if (!file.empty()) return CopyPath(file, path, size);
    SetLastErrorFromErrno();
    return 0;
}
