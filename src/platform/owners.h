#pragma once

// Owners of what the platform gives out. Each gives it back exactly once, whatever is thrown or returned in between,
// and looks at no result: who has to report a failure takes the value out with Release. An owner can be moved, not
// copied.

#include <utility>

#include "platform/windows_api.h"

// `Kind` says what stands for nothing, None(), and how a value is given back, Free().
template <typename Kind>
class Owner {
  public:
    using Value = typename Kind::Value;

    Owner() = default;
    explicit Owner(Value value) : m_Value(value) {}
    ~Owner() { Reset(); }
    Owner(Owner&& other) noexcept : m_Value(other.Release()) {}
    Owner& operator=(Owner&& other) noexcept {
        Reset(other.Release());
        return *this;
    }

    Value Get() const { return m_Value; }
    explicit operator bool() const { return m_Value != Kind::None(); }

    // Gives up the value without giving it back.
    Value Release() { return std::exchange(m_Value, Kind::None()); }
    // Gives back what is there, and takes the value.
    void Reset(Value value = Kind::None()) {
        const Value before = std::exchange(m_Value, value);
        if (before != Kind::None()) Kind::Free(before);
    }
    // For a call that writes the value through a pointer.
    Value* Receive() {
        Reset();
        return &m_Value;
    }

  private:
    Value m_Value = Kind::None();
};

// What CloseHandle gives back, where a null handle is none: processes, threads, events.
struct HandleKind {
    using Value = HANDLE;
    static Value None() { return nullptr; }
    static void Free(Value value) { CloseHandle(value); }
};
using OwnedHandle = Owner<HandleKind>;

// The same where all ones are none: files, pipes, snapshots, and events that are kept for long.
struct FileKind : HandleKind {
    static Value None() { return INVALID_HANDLE_VALUE; }
};
using OwnedFile = Owner<FileKind>;

using OwnedEvent = Owner<FileKind>;

// A registered wait, all ones for none. Giving it back doesn't wait for a callback that is running.
struct WaitKind : FileKind {
    static void Free(Value value) { UnregisterWaitEx(value, nullptr); }
};
using OwnedWait = Owner<WaitKind>;

struct RegistryKeyKind {
    using Value = HKEY;
    static Value None() { return nullptr; }
    static void Free(Value value) { RegCloseKey(value); }
};
using OwnedRegistryKey = Owner<RegistryKeyKind>;

struct SidKind {
    using Value = PSID;
    static Value None() { return nullptr; }
    static void Free(Value value) { FreeSid(value); }
};
using OwnedSid = Owner<SidKind>;

// Memory of LocalAlloc.
template <typename T>
struct LocalKind {
    using Value = T*;
    static Value None() { return nullptr; }
    static void Free(Value value) { LocalFree(value); }
};
template <typename T>
using OwnedLocal = Owner<LocalKind<T>>;

// A text of CoTaskMemAlloc.
struct TaskTextKind {
    using Value = LPWSTR;
    static Value None() { return nullptr; }
    static void Free(Value value) { CoTaskMemFree(value); }
};
using OwnedTaskText = Owner<TaskTextKind>;
