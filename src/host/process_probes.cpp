#include "host/process_probes.h"

#include <cstring>
#include <string>

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"
#include "platform/owners.h"

namespace {

bool IsAdministrator() {
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    OwnedSid administrators;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                  administrators.Receive())) {
        return false;
    }
    BOOL isMember = FALSE;
    return CheckTokenMembership(nullptr, administrators.Get(), &isMember) && isMember;
}

// False, with a line logged, if there is no list of processes to look in. The id is 0 if the list doesn't name a
// parent.
bool FindParentProcessId(DWORD& parentId) {
    const DWORD ownId = GetCurrentProcessId();
    if (ownId == 0) {
        ReportLastError("Could not get ID from the current process");
        return false;
    }
    const OwnedFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) {
        ReportLastError("Could not get a valid snapshot of the process.");
        return false;
    }
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    if (!Process32FirstW(snapshot.Get(), &entry)) {
        ReportLastError("Could not get the process information from the snapshot.");
        return false;
    }
    parentId = 0;
    do {
        if (entry.th32ProcessID == ownId) parentId = entry.th32ParentProcessID;
    } while (parentId == 0 && Process32NextW(snapshot.Get(), &entry));
    return true;
}

// The length of the path of the process's executable; 0, with nothing reported, if it can't be read. One that doesn't
// fit is cut, and its length is then kPathCapacity or more.
DWORD ReadExecutablePath(HANDLE process, WCHAR (&path)[kPathCapacity + 1]) {
    HMODULE module = nullptr;  // the first module of a process is its executable
    DWORD needed = 0;
    if (!K32EnumProcessModules(process, &module, sizeof(HMODULE), &needed)) return 0;
    return K32GetModuleFileNameExW(process, module, path, kPathCapacity);
}

}  // namespace

AdminState GetAdminState() {
    static AdminState state = AdminState::Unknown;
    if (state == AdminState::Unknown) {
        state = IsAdministrator() ? AdminState::Administrator
                : IsUacDisabled() ? AdminState::UacDisabled
                                  : AdminState::Limited;
    }
    return state;
}

bool IsUacDisabled() {
    OwnedRegistryKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, WIDE_TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System"),
                      0, KEY_READ, key.Receive()) != ERROR_SUCCESS) {
        return false;
    }
    DWORD enabled = 1;
    DWORD size = sizeof enabled;
    const bool read = RegQueryValueExW(key.Get(), WIDE_TEXT("EnableLUA"), nullptr, nullptr,
                                       reinterpret_cast<BYTE*>(&enabled), &size) == ERROR_SUCCESS;
    return read && enabled == 0;
}

bool GetParentProcessDirectory(char (&out)[kPathCapacity]) {
    DWORD parentId = 0;
    if (!FindParentProcessId(parentId)) return false;
    const OwnedHandle process(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, parentId));
    if (!process) {
        ReportLastError("Could not do OpenProcess on parent process.");
        return false;
    }
    WCHAR widePath[kPathCapacity + 1] = {};  // a path that was cut need not be terminated
    const DWORD length = ReadExecutablePath(process.Get(), widePath);
    if (length == 0) return false;

    std::string path = WideToUtf8(widePath);
    if (length >= kPathCapacity || path.size() >= sizeof out) {
        Log("Parent process location is too long and will not be used.");
        return false;
    }
    const std::size_t separator = path.find_last_of("/\\");
    if (separator != std::string::npos) path.resize(separator);
    std::memcpy(out, path.c_str(), path.size() + 1);
    return true;
}
