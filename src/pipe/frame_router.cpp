#include "pipe/frame_router.h"

#include "pipe/subsystem_base.h"

// The first whose id the message bears; null if there is none. The message then knows its body.
static SubsystemBase* FindTarget(ReceivedMessage& message) {
    for (const auto& subsystem : g_Subsystems) {
        if (OpenFrame(message, subsystem->GetId())) return subsystem.get();
    }
    return nullptr;
}

void RouteFrames(const unsigned char* data, unsigned int count) {
    ReceivedMessage message;
    while (ReadFrame(data, count, message)) {
        if (SubsystemBase* const target = FindTarget(message)) target->HandleMessage(message);
        data += FrameSize(message);
        count -= FrameSize(message);
    }
}
