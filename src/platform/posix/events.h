#pragma once

#include <utility>

#include "platform/posix/handle_table.h"
#include "platform/posix/wait_thread.h"

namespace posix_layer {

// All operations are called under LayerLock.
class Event : public Object {
  public:
    Event(bool manualReset, bool signalled) : m_ManualReset(manualReset), m_Signalled(signalled) {}

    void Set() {
        m_Signalled = true;
        WakeWaitThread();
    }
    void Reset() { m_Signalled = false; }
    bool IsSignalled() const { return m_Signalled; }

    // What a wait does that it has satisfied.
    void Consume() { m_Signalled = m_ManualReset; }

  private:
    const bool m_ManualReset;
    bool m_Signalled;
};

}  // namespace posix_layer
