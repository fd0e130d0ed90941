#pragma once

#include <memory>

#include "platform/posix/events.h"
#include "platform/posix/last_error.h"

namespace posix_layer {

// What OVERLAPPED.Internal says of a request.
inline constexpr ULONG_PTR STATUS_SUCCESS = 0;
inline constexpr ULONG_PTR STATUS_PENDING = 0x103;
inline constexpr ULONG_PTR STATUS_PIPE_DISCONNECTED = 0xC00000B0;
inline constexpr ULONG_PTR STATUS_PIPE_CLOSING = 0xC00000B1;
inline constexpr ULONG_PTR STATUS_CANCELLED = 0xC0000120;
inline constexpr ULONG_PTR STATUS_PIPE_BROKEN = 0xC000014B;

// One request under way. Everything is called under LayerLock.
class OverlappedRequest {
  public:
    bool IsPending() const { return m_Overlapped != nullptr; }

    // Resets the event. False, with the last error, if there is no usable one or a request is under way already.
    bool Begin(OVERLAPPED* overlapped) {
        if (overlapped == nullptr || IsPending()) return WithLastError(ERROR_INVALID_PARAMETER, false);
        std::shared_ptr<Event> event;
        if (overlapped->hEvent != nullptr) {
            event = Find<Event>(overlapped->hEvent);
            if (event == nullptr) return false;
            event->Reset();
        }
        m_Overlapped = overlapped;
        m_Event = std::move(event);
        m_Overlapped->Internal = STATUS_PENDING;
        m_Overlapped->InternalHigh = 0;
        return true;
    }

    // The event is signalled, and the OVERLAPPED not touched any more.
    void Complete(ULONG_PTR status, DWORD count) {
        if (!IsPending()) return;
        m_Overlapped->Internal = status;
        m_Overlapped->InternalHigh = count;
        if (m_Event != nullptr) m_Event->Set();
        Forget();
    }

    // For a request that has failed at its start: the event stays as it is.
    BOOL Fail(DWORD code) {
        Forget();
        SetLastError(code);
        return FALSE;
    }

  private:
    void Forget() {
        m_Overlapped = nullptr;
        m_Event = nullptr;
    }

    OVERLAPPED* m_Overlapped = nullptr;
    std::shared_ptr<Event> m_Event;
};

}  // namespace posix_layer
