#include "platform/posix/environment.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

namespace posix_layer {

std::mutex& EnvironmentLock() {
    static NoDestructor<std::mutex> lock;
    return *lock;
}

std::optional<std::string> GetVariable(const char* name) {
    const std::lock_guard lock(EnvironmentLock());
    const char* const value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return value;
}

std::optional<std::string> FirstVariable(std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        if (auto value = GetVariable(name); value && !value->empty()) return value;
    }
    return std::nullopt;
}

namespace {

// Windows' rule for texts of unknown length: the length without the terminator if `text` fits, else the size it needs.
template <class Character>
DWORD CopyOrSize(const std::basic_string<Character>& text, Character* buffer, DWORD size) {
    if (text.size() >= size) return static_cast<DWORD>(text.size() + 1);
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<DWORD>(text.size());
}

}  // namespace

}  // namespace posix_layer

using namespace posix_layer;

DWORD GetEnvironmentVariableA(const char* name, char* value, DWORD size) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    const std::optional<std::string> found = GetVariable(name);
    if (!found) return WithLastError(ERROR_ENVVAR_NOT_FOUND, DWORD{0});
    return CopyOrSize(*found, value, size);
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR value, DWORD size) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    const std::optional<std::string> found = GetVariable(ToUtf8(name).c_str());
    if (!found) return WithLastError(ERROR_ENVVAR_NOT_FOUND, DWORD{0});
    return CopyOrSize(ToWide(*found), value, size);
}

BOOL SetEnvironmentVariableA(const char* name, const char* value) {
    if (Faulted(__func__)) return FALSE;
    const std::lock_guard lock(EnvironmentLock());
    const int result = value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    if (result != 0) SetLastError(errno == EINVAL ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY);
    return result == 0;
}

DWORD GetCurrentDirectoryW(DWORD size, LPWSTR path) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    char directory[PATH_MAX];
    if (getcwd(directory, sizeof directory) == nullptr) {
        SetLastErrorFromErrno();
        return 0;
    }
    return CopyOrSize(ToWide(directory), path, size);
}

BOOL SetCurrentDirectoryW(LPCWSTR path) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::string directory = ToNativePath(path);
    if (chdir(directory.c_str()) == 0) return TRUE;
    if (errno == ENOTDIR) {
        SetLastError(ERROR_DIRECTORY);
    } else {
        SetLastErrorFromErrno(directory);
    }
    return FALSE;
}
