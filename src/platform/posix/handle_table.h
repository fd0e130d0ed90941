#pragma once

// Handles are entries of one table and never used twice, so that the use of a closed one is found out. Any thread.

#include <memory>

#include "platform/posix/windows_calls.h"

namespace posix_layer {

// What a handle stands for.
class Object {
  public:
    virtual ~Object() = default;

    // Called once, when the handle has left the table, with no lock held. The object lives on while others use it.
    virtual void OnClose() {}

    // False for a handle that CloseHandle refuses.
    virtual bool IsClosable() const { return true; }
};

HANDLE AddHandle(std::shared_ptr<Object> object);

// Both give null if there is no such handle, without touching the last error.
std::shared_ptr<Object> FindObject(HANDLE handle);
std::shared_ptr<Object> RemoveHandle(HANDLE handle);

// Null, with the last error ERROR_INVALID_HANDLE, if the handle stands for nothing or for something else.
template <class T>
std::shared_ptr<T> Find(HANDLE handle) {
    auto object = std::dynamic_pointer_cast<T>(FindObject(handle));
    if (object == nullptr) SetLastError(ERROR_INVALID_HANDLE);
    return object;
}

}  // namespace posix_layer
