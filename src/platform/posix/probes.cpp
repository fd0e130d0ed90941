// Token and registry: what they would say of this process.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

#include "platform/no_destructor.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/testing/probe_answers.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

// What tests have set.
struct SetAnswers {
    std::mutex lock;
    std::optional<bool> administrator;
    std::optional<DWORD> enableLua;
};

SetAnswers& TheSetAnswers() {
    static NoDestructor<SetAnswers> answers;
    return *answers;
}

bool IsAdministrator() {
    SetAnswers& answers = TheSetAnswers();
    const std::lock_guard lock(answers.lock);
    return answers.administrator.value_or(geteuid() == 0);
}

// Without padding: they are compared byte by byte.
struct SecurityIdentifier {
    BYTE authority[8];
    DWORD subAuthorities[3];
};
constexpr SecurityIdentifier kAdministrators = {SECURITY_NT_AUTHORITY,
                                                {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS}};

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
    const std::lock_guard lock(TheSetAnswers().lock);
    TheSetAnswers().administrator = isMember;
}

void SetEnableLua(std::optional<DWORD> value) {
    const std::lock_guard lock(TheSetAnswers().lock);
    TheSetAnswers().enableLua = value;
}

}  // namespace platform_testing

BOOL AllocateAndInitializeSid(SID_IDENTIFIER_AUTHORITY* authority, BYTE, DWORD subAuthority0, DWORD subAuthority1,
                              DWORD subAuthority2, DWORD, DWORD, DWORD, DWORD, DWORD, PSID* sid) {
    if (Faulted(__func__)) return FALSE;
    SecurityIdentifier value = {{}, {subAuthority0, subAuthority1, subAuthority2}};
    std::memcpy(value.authority, authority->Value, sizeof authority->Value);
    *sid = std::malloc(sizeof value);
    if (*sid == nullptr) return WithLastError(ERROR_NOT_ENOUGH_MEMORY, FALSE);
    std::memcpy(*sid, &value, sizeof value);
    return TRUE;
}

BOOL CheckTokenMembership(HANDLE, PSID sid, BOOL* isMember) {
    if (Faulted(__func__)) return FALSE;
    *isMember = std::memcmp(sid, &kAdministrators, sizeof kAdministrators) == 0 && IsAdministrator();
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
    const std::lock_guard lock(TheSetAnswers().lock);
    const std::optional<DWORD> value = TheSetAnswers().enableLua;
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
