#pragma once

// The process's one connection to the launcher: a duplex byte pipe with a single instance. It moves blocks of bytes and
// knows nothing of what they hold. When the connection is lost the pipe is recreated at once, so that a returning
// launcher finds one listening; if that fails nothing tries again.
//
// One pipe per process. The owner's worker creates and destroys it; everything else happens on a wait thread. All
// operations hold g_CompletionLock. Failures are logged.

#include <string>

#include "pipe/frame.h"
#include "pipe/pipe_callbacks.h"

namespace NamedPipeServer {

// True when the pipe is listening, or connected already. `callbacks` is not owned and must stay where it is until
// StopDeliveries; it may be null. On false the last error is the code of the call that failed.
bool Create(const std::string& name, PipeCallbacks* callbacks);

// Closes the pipe; frames that wait to be sent are dropped. False only if the handle couldn't be closed.
bool Destroy();

// True when the frame was handed to the system or queued behind a write in flight, not when it was delivered; the block
// is then the server's. On false it stays with the caller: nobody is connected, or the frame is empty.
bool Send(OutgoingFrame& frame);

// Waits for a completion that is running; when this returns, none of the callbacks is running or will ever be called
// again, until the next Create; the client counts as gone. Not from a callback. Does nothing if there is no pipe.
void StopDeliveries();

}  // namespace NamedPipeServer
