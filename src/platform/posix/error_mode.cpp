#include "platform/posix/error_mode.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "platform/posix/fault_check.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

static thread_local DWORD t_ErrorMode = 0;

BOOL SetThreadErrorMode(DWORD mode, DWORD* before) {
    if (Faulted(__func__)) return FALSE;
    const DWORD old = std::exchange(t_ErrorMode, mode);
    if (before != nullptr) *before = old;
    return TRUE;
}

void posix_layer::ExpectNoDialog(const char* call) {
    if ((t_ErrorMode & SEM_FAILCRITICALERRORS) != 0) return;
    std::fprintf(stderr, "%s: on Windows a dialog might show now\n", call);
    std::abort();
}
