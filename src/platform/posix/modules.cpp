#include <dlfcn.h>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/error_mode.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE, DWORD) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return nullptr;
    ExpectNoDialog(__func__);
    auto* const module = static_cast<HMODULE>(dlopen(ToNativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL));
    if (module == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
    return module;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    if (Faulted(__func__)) return nullptr;
    void* const address = dlsym(module, name);
    if (address == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    return dlclose(module) == 0;
}

DWORD GetModuleFileNameW(HMODULE, LPWSTR path, DWORD size) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    return CopyPath(ReadLink("/proc/self/exe"), path, size);
}

HMODULE GetModuleHandleW(LPCWSTR) {
    if (Faulted(__func__)) return nullptr;
    static char module;
    return reinterpret_cast<HMODULE>(&module);
}
