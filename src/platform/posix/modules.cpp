#include <dlfcn.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <string>

#include "platform/posix/fault_check.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

// How often each module is loaded: the system's own calls crash when they are given anything else.
struct Modules {
    std::mutex lock;
    std::map<HMODULE, int> loaded;
};

Modules& State() {
    static Modules& modules = *new Modules;
    return modules;
}

HMODULE OwnModule() {
    static char module;
    return reinterpret_cast<HMODULE>(&module);
}

bool IsLoaded(HMODULE module) {
    const std::lock_guard lock(State().lock);
    if (State().loaded.contains(module)) return true;
    SetLastError(ERROR_MOD_NOT_FOUND);
    return false;
}

}  // namespace

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE, DWORD) {
    if (Faulted(__func__)) return nullptr;
    auto* const module = static_cast<HMODULE>(dlopen(ToNativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL));
    if (module == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const std::lock_guard lock(State().lock);
    ++State().loaded[module];
    return module;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    if (Faulted(__func__)) return nullptr;
    if (!IsLoaded(module)) return nullptr;
    void* const address = dlsym(module, name);
    if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
    if (Faulted(__func__)) return FALSE;
    if (!IsLoaded(module)) return FALSE;
    {
        const std::lock_guard lock(State().lock);
        if (--State().loaded[module] == 0) State().loaded.erase(module);
    }
    dlclose(module);
    return TRUE;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) {
    if (Faulted(__func__)) return 0;
    if (module != nullptr && module != OwnModule()) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    const std::u16string file = ToWide(ReadLink("/proc/self/exe"));
    if (file.size() < size) {
        std::copy_n(file.c_str(), file.size() + 1, path);
        return static_cast<DWORD>(file.size());
    }
    if (size > 0) {
        std::copy_n(file.c_str(), size - 1, path);
        path[size - 1] = 0;
    }
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

HMODULE GetModuleHandleW(LPCWSTR name) {
    if (Faulted(__func__)) return nullptr;
    if (name == nullptr) return OwnModule();
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}
