#include "platform/posix/allocation_faults.h"
#include "platform/posix/events.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"
#include "platform/posix/registered_waits.h"
#include "platform/posix/wait_thread.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

HANDLE CreateEventW(SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return nullptr;
    if (name != nullptr) return WithLastError(ERROR_INVALID_PARAMETER, nullptr);
    return AddHandle(std::make_shared<Event>(manualReset != FALSE, initialState != FALSE));
}

BOOL SetEvent(HANDLE event) {
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<Event>(event);
    if (object == nullptr) return FALSE;
    const std::lock_guard lock(LayerLock());
    object->Set();
    return TRUE;
}

BOOL RegisterWaitForSingleObject(HANDLE* newWait, HANDLE object, WAITORTIMERCALLBACK callback, void* context,
                                 ULONG milliseconds, ULONG flags) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const auto wait = std::make_shared<RegisteredWait>();
    wait->event = Find<Event>(object);
    if (wait->event == nullptr) return FALSE;
    wait->callback = callback;
    wait->context = context;
    wait->onlyOnce = (flags & WT_EXECUTEONLYONCE) != 0;
    if (milliseconds != INFINITE) wait->timeOut = std::chrono::milliseconds(milliseconds);

    // Held until the handle is written: the callback may want to unregister its wait.
    const std::lock_guard lock(LayerLock());
    if (!StartWaitThread()) return FALSE;
    *newWait = AddHandle(wait);
    AddWait(wait);
    return TRUE;
}

BOOL UnregisterWaitEx(HANDLE wait, HANDLE completionEvent) {
    if (Faulted(__func__)) return FALSE;
    if (completionEvent != nullptr) return WithLastError(ERROR_INVALID_PARAMETER, FALSE);
    const auto object = Find<RegisteredWait>(wait);
    if (object == nullptr || RemoveHandle(wait) == nullptr) return WithLastError(ERROR_INVALID_HANDLE, FALSE);
    const std::lock_guard lock(LayerLock());
    RemoveWait(*object);
    return object->running ? WithLastError(ERROR_IO_PENDING, FALSE) : TRUE;
}
