#pragma once

// An object of static storage that is never destroyed, and whose place isn't on the heap. For what threads of the
// system may still use while the process's statics go.

#include <new>
#include <utility>

template <class T>
class NoDestructor {
  public:
    template <class... Arguments>
    explicit NoDestructor(Arguments&&... arguments) {
        new (m_Storage) T(std::forward<Arguments>(arguments)...);
    }
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(m_Storage)); }
    T* operator->() { return &**this; }

  private:
    alignas(T) unsigned char m_Storage[sizeof(T)];
};
