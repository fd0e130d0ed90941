#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <tlhelp32.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "support/temp_folder.h"
#include "tools/probe/doctor/processes.h"

namespace {

struct Closer {
    void operator()(void* handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, Closer>;

std::string NameOf(const std::wstring& path) {
    std::filesystem::path file = std::filesystem::path(path).filename();
    if (_wcsicmp(file.extension().c_str(), L".exe") == 0) file.replace_extension();
    std::string name = support::ToUtf8(file);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return name;
}

struct Rights {
    std::vector<char> m_User;  // a TOKEN_USER, whose identifier points into it
    bool m_IsElevated = false;

    PSID Sid() const { return reinterpret_cast<const TOKEN_USER*>(m_User.data())->User.Sid; }
};

std::optional<Rights> RightsOf(HANDLE process) {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(process, TOKEN_QUERY, &opened)) return std::nullopt;
    const OwnedHandle token(opened);
    Rights rights;
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    rights.m_User.resize(size);
    TOKEN_ELEVATION elevation = {};
    DWORD elevationSize = 0;
    if (!GetTokenInformation(token.get(), TokenUser, rights.m_User.data(), size, &size) ||
        !GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &elevationSize)) {
        return std::nullopt;
    }
    rights.m_IsElevated = elevation.TokenIsElevated != 0;
    return rights;
}

Relation RelationTo(HANDLE process) {
    const std::optional<Rights> own = RightsOf(GetCurrentProcess());
    const std::optional<Rights> others = RightsOf(process);
    if (!own || !others || !EqualSid(own->Sid(), others->Sid())) return Relation::OtherUser;
    return own->m_IsElevated == others->m_IsElevated ? Relation::Equal : Relation::OtherRights;
}

}  // namespace

std::optional<ProcessLook> LookAtProcess(std::uint32_t id) {
    const OwnedHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, id));
    if (!process) {
        if (GetLastError() != ERROR_ACCESS_DENIED) return std::nullopt;
        return ProcessLook{id, "", Relation::OtherUser};
    }
    // Somebody may hold on to a process that has ended.
    if (WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0) return std::nullopt;
    wchar_t path[4096];
    DWORD length = static_cast<DWORD>(std::size(path));
    const bool hasPath = QueryFullProcessImageNameW(process.get(), 0, path, &length) != 0;
    return ProcessLook{id, hasPath ? NameOf(path) : "", RelationTo(process.get())};
}

std::optional<std::uint32_t> SteamProcessId() {
    DWORD id = 0;
    DWORD size = sizeof id;
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, L"Software\\Valve\\Steam\\ActiveProcess", L"pid",
                                        RRF_RT_REG_DWORD, nullptr, &id, &size);
    return status == ERROR_SUCCESS && id != 0 ? std::optional<std::uint32_t>(id) : std::nullopt;
}

// Its name may be another one, but its hidden window is there, if it is one of this desktop's.
static std::vector<DWORD> OwnersOfHelperWindows() {
    std::vector<DWORD> owners;
    HWND window = nullptr;
    while ((window = FindWindowExW(HWND_MESSAGE, window, L"Tollmere Steam Helper", nullptr)) != nullptr) {
        DWORD owner = 0;
        if (GetWindowThreadProcessId(window, &owner) != 0) owners.push_back(owner);
    }
    return owners;
}

std::vector<ProcessLook> FindHelpers(const std::string&) {
    std::vector<ProcessLook> helpers;
    const HANDLE handle = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (handle == INVALID_HANDLE_VALUE) return helpers;
    const OwnedHandle snapshot(handle);
    const std::vector<DWORD> owners = OwnersOfHelperWindows();
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(handle, &entry); more; more = Process32NextW(handle, &entry)) {
        const DWORD id = entry.th32ProcessID;
        const std::string name = NameOf(entry.szExeFile);
        if (!IsHelperName(name) && std::find(owners.begin(), owners.end(), id) == owners.end()) continue;
        std::optional<ProcessLook> look = LookAtProcess(id);
        if (!look) continue;
        look->m_Name = name;  // of a process that can't be opened, too
        helpers.push_back(*look);
    }
    return helpers;
}
