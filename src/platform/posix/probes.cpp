// Token and registry: what they would say of this process.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

#include "platform/posix/fault_check.h"
#include "platform/posix/security_identifiers.h"
#include "platform/posix/testing/surroundings.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

struct Surroundings {
    std::mutex lock;
    std::optional<bool> administrator;
    std::optional<DWORD> enableLua;
};

Surroundings& State() {
    static Surroundings& state = *new Surroundings;
    return state;
}

bool IsAdministrator() {
    Surroundings& state = State();
    const std::lock_guard lock(state.lock);
    return state.administrator.value_or(geteuid() == 0);
}

bool IsAdministratorsGroup(const SecurityIdentifier& sid) {
    const BYTE ntAuthority[] = SECURITY_NT_AUTHORITY;
    return sid.count == 2 && std::memcmp(sid.authority, ntAuthority, sizeof ntAuthority) == 0 &&
           sid.subAuthorities[0] == SECURITY_BUILTIN_DOMAIN_RID && sid.subAuthorities[1] == DOMAIN_ALIAS_RID_ADMINS;
}

constexpr std::u16string_view kPoliciesKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System";
constexpr std::u16string_view kEnableLua = u"EnableLUA";
constexpr DWORD kDwordType = 4;

// The one key that can be opened.
HKEY PoliciesKey() {
    static char key;
    return &key;
}

}  // namespace

namespace platform_testing {

void SetAdministrator(std::optional<bool> isMember) {
    const std::lock_guard lock(State().lock);
    State().administrator = isMember;
}

void SetEnableLua(std::optional<DWORD> value) {
    const std::lock_guard lock(State().lock);
    State().enableLua = value;
}

}  // namespace platform_testing

BOOL AllocateAndInitializeSid(SID_IDENTIFIER_AUTHORITY* authority, BYTE count, DWORD subAuthority0, DWORD subAuthority1,
                              DWORD subAuthority2, DWORD subAuthority3, DWORD subAuthority4, DWORD subAuthority5,
                              DWORD subAuthority6, DWORD subAuthority7, PSID* sid) {
    if (Faulted(__func__)) return FALSE;
    if (count > kMaxSubAuthorities) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    SecurityIdentifier value = {1,
                                count,
                                {},
                                {subAuthority0, subAuthority1, subAuthority2, subAuthority3, subAuthority4,
                                 subAuthority5, subAuthority6, subAuthority7}};
    std::memcpy(value.authority, authority->Value, sizeof value.authority);
    *sid = std::malloc(sizeof value);
    if (*sid == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    std::memcpy(*sid, &value, sizeof value);
    return TRUE;
}

BOOL CheckTokenMembership(HANDLE token, PSID sid, BOOL* isMember) {
    if (Faulted(__func__)) return FALSE;
    if (token != nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *isMember = IsAdministratorsGroup(*static_cast<const SecurityIdentifier*>(sid)) && IsAdministrator();
    return TRUE;
}

void* FreeSid(PSID sid) {
    std::free(sid);
    return nullptr;
}

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD, DWORD, HKEY* result) {
    if (const auto fault = TakeFault(__func__)) return static_cast<LSTATUS>(*fault);
    if (key != HKEY_LOCAL_MACHINE || subKey != kPoliciesKey) return ERROR_FILE_NOT_FOUND;
    *result = PoliciesKey();
    return ERROR_SUCCESS;
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    if (const auto fault = TakeFault(__func__)) return static_cast<LSTATUS>(*fault);
    if (key != PoliciesKey()) return ERROR_INVALID_HANDLE;
    const std::lock_guard lock(State().lock);
    const std::optional<DWORD> value = State().enableLua;
    if (name != kEnableLua || !value) return ERROR_FILE_NOT_FOUND;
    if (type != nullptr) *type = kDwordType;
    const DWORD room = *size;
    *size = sizeof *value;
    if (data == nullptr) return ERROR_SUCCESS;
    if (room < sizeof *value) return ERROR_MORE_DATA;
    std::memcpy(data, &*value, sizeof *value);
    return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY key) {
    if (const auto fault = TakeFault(__func__)) return static_cast<LSTATUS>(*fault);
    if (key != PoliciesKey()) return ERROR_INVALID_HANDLE;
    return ERROR_SUCCESS;
}
