#pragma once

#include <functional>

// What the pipe server tells its owner. All four run on a wait thread, one at a time. None is ever empty: a
// do-nothing one stands in until the owner installs its own, which it does before it creates the pipe.
struct PipeCallbacks {
    // A client has connected; the first read isn't issued yet.
    std::function<void()> OnConnected = [] {};

    // Directly after OnConnected, with the pipe's handle, which the server keeps. The result isn't looked at.
    std::function<bool(void* pipe)> OnClientHandle = [](void*) { return true; };

    // The client is gone. The pipe has been recreated, or that has failed, with its lines logged.
    std::function<void()> OnDisconnected = [] {};

    // A read has delivered `size` bytes, which can be 0. They are the server's and valid during the call only; nothing
    // relies on a terminator behind them.
    std::function<void(unsigned char* data, unsigned int size)> OnData = [](unsigned char*, unsigned int) {};
};
