#include "pipe/named_pipe_server.h"

#include <array>
#include <deque>
#include <utility>

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"
#include "pipe/completion_lock.h"
#include "pipe/overlapped_operation.h"
#include "pipe/pipe_security.h"
#include "platform/no_destructor.h"

namespace {

constexpr DWORD kBufferSize = 65536;

enum Operation { kConnect, kRead, kWrite, kOperationCount };

// Never destroyed: a completion that comes late may still look at its operation while the process's statics go.
NoDestructor<std::array<OverlappedOperation, kOperationCount>> g_PipeOperations GUARDED_BY(g_CompletionLock);
OwnedFile g_PipeHandle GUARDED_BY(g_CompletionLock);  // INVALID_HANDLE_VALUE: none
std::string g_PipeName GUARDED_BY(g_CompletionLock);
PipeCallbacks* g_Callbacks GUARDED_BY(g_CompletionLock) = nullptr;
bool g_Connected GUARDED_BY(g_CompletionLock) = false;
unsigned char g_ReadBuffer[kBufferSize] GUARDED_BY(g_CompletionLock);
std::deque<OutgoingFrame> g_SendQueue GUARDED_BY(g_CompletionLock);

// The block of a pending write. Goes when the write has completed or the pipe's handle is closed.
OutgoingFrame g_FrameInFlight GUARDED_BY(g_CompletionLock);

void HandleDisconnect() REQUIRES(g_CompletionLock);

void StartRead() REQUIRES(g_CompletionLock) {
    OverlappedOperation& read = (*g_PipeOperations)[kRead];
    DWORD count = 0;
    const BOOL started = ReadFile(g_PipeHandle.Get(), g_ReadBuffer, kBufferSize, &count, &read.m_Overlapped);
    if (read.NoteStart(started) != OverlappedOperation::Start::Failed) return;
    ReportLastError("Error reading from pipe.");
    HandleDisconnect();
}

void WriteFrame(OutgoingFrame frame) REQUIRES(g_CompletionLock) {
    if (!g_Connected) {
        Log("Can't write; not connected.");
        return;
    }
    OverlappedOperation& write = (*g_PipeOperations)[kWrite];
    DWORD count = 0;
    const BOOL started = WriteFile(g_PipeHandle.Get(), frame.m_Data.get(), frame.m_Size, &count, &write.m_Overlapped);
    switch (write.NoteStart(started)) {
        case OverlappedOperation::Start::Done:
            break;
        case OverlappedOperation::Start::Pending:
            g_FrameInFlight = std::move(frame);
            break;
        case OverlappedOperation::Start::Failed:
            ReportLastError("Error writing to pipe.");
            HandleDisconnect();
            break;
    }
}

void OnReadCompleted() REQUIRES(g_CompletionLock) {
    DWORD count = 0;
    const auto result = (*g_PipeOperations)[kRead].TakeResult(g_PipeHandle.Get(), count);
    if (result == OverlappedOperation::Result::StillPending) return;
    if (result == OverlappedOperation::Result::Failed) {
        ReportLastError("Failed to read from pipe.");
        HandleDisconnect();
        return;
    }
    // For whoever looks at the buffer in a debugger; nothing relies on it.
    if (count < kBufferSize - 1) g_ReadBuffer[count] = '\0';
    if (g_Callbacks != nullptr) g_Callbacks->OnData(g_ReadBuffer, count);
    // An answer that couldn't be written has ended this connection, and the pipe already listens for the next one.
    if (g_Connected) StartRead();
}

void OnWriteCompleted() REQUIRES(g_CompletionLock) {
    DWORD count = 0;
    const auto result = (*g_PipeOperations)[kWrite].TakeResult(g_PipeHandle.Get(), count);
    if (result == OverlappedOperation::Result::StillPending) return;
    if (result == OverlappedOperation::Result::Failed) {
        ReportLastError("Failed to write to pipe.");
        HandleDisconnect();
        return;
    }
    g_FrameInFlight = {};
    if (g_SendQueue.empty()) return;
    OutgoingFrame next = std::move(g_SendQueue.front());
    g_SendQueue.pop_front();
    WriteFrame(std::move(next));
}

void OnConnectCompleted() REQUIRES(g_CompletionLock) {
    Log("Pipe connected.");
    (*g_PipeOperations)[kConnect].Cleanup(true);
    (*g_PipeOperations)[kRead].Initialize(OnReadCompleted, false);
    (*g_PipeOperations)[kWrite].Initialize(OnWriteCompleted, false);
    g_Connected = true;
    if (g_Callbacks != nullptr) {
        g_Callbacks->OnConnected();
        g_Callbacks->OnClientHandle(g_PipeHandle.Get());
    }
    StartRead();
}

// Ends the connection and listens for the next one.
void HandleDisconnect() REQUIRES(g_CompletionLock) {
    Log("Disconnected.");
    g_Connected = false;
    (*g_PipeOperations)[kRead].Cleanup(true);
    (*g_PipeOperations)[kWrite].Cleanup(true);
    if (g_PipeHandle && !DisconnectNamedPipe(g_PipeHandle.Get())) ReportLastError("Failed to disconnect pipe.");
    NamedPipeServer::Destroy();
    // If it fails, nothing tries again: the timed shutdown ends the process.
    NamedPipeServer::Create(g_PipeName, g_Callbacks);
    if (g_Callbacks != nullptr) g_Callbacks->OnDisconnected();
}

struct StartResult {
    bool succeeded;
    DWORD error;  // of the call that failed
};

StartResult Listen() REQUIRES(g_CompletionLock) {
    Log("Connecting pipe...");
    OverlappedOperation& connect = (*g_PipeOperations)[kConnect];
    connect.Initialize(OnConnectCompleted, true);
    switch (connect.NoteStart(ConnectNamedPipe(g_PipeHandle.Get(), &connect.m_Overlapped))) {
        case OverlappedOperation::Start::Done:
            Log("Connected pipe.");
            return {true, ERROR_SUCCESS};
        case OverlappedOperation::Start::Pending:
            Log("Waiting for pipe to connect...");
            return {true, ERROR_SUCCESS};
        case OverlappedOperation::Start::Failed:
            break;
    }
    // A client came, or came and went, since the pipe was created. The platform signals nothing then, so we do. If the
    // client has gone already, the first read fails and ends the connection. Without the signal the connection would
    // stay mute: that is a failure.
    if (GetLastError() == ERROR_PIPE_CONNECTED || GetLastError() == ERROR_NO_DATA) {
        SetLastError(ERROR_SUCCESS);
        Log("Connected pipe.");
        if (SetEvent(connect.m_Overlapped.hEvent)) return {true, ERROR_SUCCESS};
    }
    const DWORD error = ReportLastError("Unable to connect pipe.");
    Log("Unable to connect pipe: %d (0x%x)", static_cast<int>(error), static_cast<unsigned>(error));
    connect.Cleanup(false);
    return {false, error};
}

StartResult CreateAndListen() REQUIRES(g_CompletionLock) {
    PipeSecurity security;
    g_PipeHandle.Reset(CreateNamedPipeA(g_PipeName.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_ACCEPT_REMOTE_CLIENTS, 1,
                                        kBufferSize, kBufferSize, 0, security.Attributes()));
    if (!g_PipeHandle) return {false, ReportLastError("Unable to create pipe.")};
    return Listen();
}

}  // namespace

bool NamedPipeServer::Create(const std::string& name, PipeCallbacks* callbacks) {
    const LockGuard lock(g_CompletionLock);
    Log("Creating pipe [%s]", name.c_str());
    g_PipeName = name;
    g_Callbacks = callbacks;
    const StartResult result = CreateAndListen();
    if (!result.succeeded) SetLastError(result.error);
    return result.succeeded;
}

bool NamedPipeServer::Destroy() {
    const LockGuard lock(g_CompletionLock);
    Log("Destroying pipe...");
    for (OverlappedOperation& operation : *g_PipeOperations) operation.Cleanup(false);
    bool closed = true;
    if (g_PipeHandle) {
        closed = CloseHandle(g_PipeHandle.Release());
        if (closed) {
            g_FrameInFlight = {};
        } else {
            ReportLastError("Unable to close pipe handle.");
        }
    }
    g_SendQueue.clear();
    return closed;
}

bool NamedPipeServer::Send(OutgoingFrame& frame) {
    const LockGuard lock(g_CompletionLock);
    if (!g_Connected) {
        Log("Can't send message - not connected.");
        return false;
    }
    if (frame.m_Data == nullptr || frame.m_Size == 0) {
        Log("Invalid message specified.");
        return false;
    }
    if ((*g_PipeOperations)[kWrite].m_IoPending) {
        g_SendQueue.push_back(std::move(frame));
    } else {
        WriteFrame(std::move(frame));
    }
    return true;
}

void NamedPipeServer::StopDeliveries() {
    // A completion runs under the lock as a whole: none is running now, and one that comes late finds nothing to do.
    const LockGuard lock(g_CompletionLock);
    g_Callbacks = nullptr;
    g_Connected = false;
    for (OverlappedOperation& operation : *g_PipeOperations) operation.Cleanup(true);
}
