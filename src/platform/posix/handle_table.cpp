#include "platform/posix/handle_table.h"

#include <map>
#include <mutex>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/testing/faults.h"

namespace posix_layer {

namespace {

// The lock is a leaf: nothing else is locked, and no object dies, under it.
struct HandleTable {
    std::mutex lock;
    std::map<HANDLE, std::shared_ptr<Object>> objects;
    std::uintptr_t last = 0x40;
};

HandleTable& Table() {
    static NoDestructor<HandleTable> table;
    return *table;
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<Object> object) {
    HandleTable& table = Table();
    const std::lock_guard lock(table.lock);
    // Like those of Windows, multiples of four.
    table.last += 4;
    const HANDLE handle = reinterpret_cast<HANDLE>(table.last);
    table.objects.emplace(handle, std::move(object));
    return handle;
}

std::shared_ptr<Object> FindObject(HANDLE handle) {
    HandleTable& table = Table();
    const std::lock_guard lock(table.lock);
    const auto found = table.objects.find(handle);
    return found == table.objects.end() ? nullptr : found->second;
}

std::shared_ptr<Object> RemoveHandle(HANDLE handle) {
    HandleTable& table = Table();
    const std::lock_guard lock(table.lock);
    const auto node = table.objects.extract(handle);
    return node.empty() ? nullptr : node.mapped();
}

}  // namespace posix_layer

using namespace posix_layer;

BOOL CloseHandle(HANDLE handle) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    std::shared_ptr<Object> object = FindObject(handle);
    if (object != nullptr && object->IsClosable()) object = RemoveHandle(handle);
    if (object == nullptr || !object->IsClosable()) return WithLastError(ERROR_INVALID_HANDLE, FALSE);
    object->OnClose();
    return TRUE;
}

int platform_testing::OpenHandleCount() {
    HandleTable& table = Table();
    const std::lock_guard lock(table.lock);
    return static_cast<int>(table.objects.size());
}
