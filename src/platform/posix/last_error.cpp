#include "platform/posix/windows_calls.h"

static thread_local DWORD t_LastError = ERROR_SUCCESS;

DWORD GetLastError() {
    return t_LastError;
}

void SetLastError(DWORD code) {
    t_LastError = code;
}
