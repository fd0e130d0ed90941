#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/pipe_end.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

// What the program reads of it stands where Windows has it.
static_assert(sizeof(OVERLAPPED) == 32);

HANDLE CreateNamedPipeA(const char* name, DWORD openMode, DWORD pipeMode, DWORD maxInstances, DWORD, DWORD, DWORD,
                        SECURITY_ATTRIBUTES* attributes) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return INVALID_HANDLE_VALUE;
    if (openMode != (PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED) || pipeMode != PIPE_TYPE_BYTE || maxInstances != 1)
        return WithLastError(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    if (attributes != nullptr && attributes->lpSecurityDescriptor != nullptr) {
        const auto* const descriptor = static_cast<const SECURITY_DESCRIPTOR*>(attributes->lpSecurityDescriptor);
        if (descriptor->Revision != SECURITY_DESCRIPTOR_REVISION)
            return WithLastError(ERROR_UNKNOWN_REVISION, INVALID_HANDLE_VALUE);
    }
    const std::shared_ptr<PipeEnd> pipe = PipeEnd::Create(name);
    return pipe == nullptr ? INVALID_HANDLE_VALUE : AddHandle(pipe);
}

BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<PipeEnd>(pipe);
    return object != nullptr && object->Connect(overlapped);
}

BOOL DisconnectNamedPipe(HANDLE pipe) {
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<PipeEnd>(pipe);
    return object != nullptr && object->Disconnect();
}

// Windows doesn't look at the handle either: the record says it all.
BOOL GetOverlappedResult(HANDLE, OVERLAPPED* overlapped, DWORD* count, BOOL wait) {
    if (Faulted(__func__)) return FALSE;
    if (wait) return WithLastError(ERROR_INVALID_PARAMETER, FALSE);
    const std::lock_guard lock(LayerLock());
    *count = static_cast<DWORD>(overlapped->InternalHigh);
    switch (overlapped->Internal) {
        case STATUS_SUCCESS:
            return TRUE;
        case STATUS_PENDING:
            SetLastError(ERROR_IO_INCOMPLETE);
            break;
        case STATUS_PIPE_DISCONNECTED:
            SetLastError(ERROR_PIPE_NOT_CONNECTED);
            break;
        case STATUS_PIPE_CLOSING:
            SetLastError(ERROR_NO_DATA);
            break;
        case STATUS_PIPE_BROKEN:
            SetLastError(ERROR_BROKEN_PIPE);
            break;
        default:
            SetLastError(ERROR_OPERATION_ABORTED);
    }
    return FALSE;
}
