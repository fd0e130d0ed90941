#pragma once

// The receivers of frames.

#include <memory>
#include <string>
#include <vector>

#include "pipe/frame.h"

class SubsystemBase {
  public:
    virtual void Init() = 0;      // worker; once, right after the subsystem has joined g_Subsystems
    virtual void Shutdown() = 0;  // worker; once, before the object is deleted
    virtual const char* GetName() = 0;
    virtual const char* GetId() = 0;  // 1 to a few characters; asked for on every frame, both ways

    // Wait thread, one message at a time.
    virtual void HandleMessage(ReceivedMessage& message) = 0;

    virtual ~SubsystemBase() = default;

    // Wraps `text`, up to its first NUL, in a frame that bears GetId() and gives it to the pipe. False, with the pipe's
    // own line logged, if the pipe doesn't take it; the text is then lost.
    bool SendSubsystemMessage(const std::string& text);
};

// Filled by the worker before the pipe exists and emptied by it after deliveries have stopped; wait threads only
// read it in between.
extern std::vector<std::unique_ptr<SubsystemBase>> g_Subsystems;
