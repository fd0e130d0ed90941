#include "pipe/named_pipe_server.h"

#include <array>
#include <deque>
#include <mutex>
#include <utility>

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"
#include "pipe/overlapped_operation.h"
#include "pipe/pipe_security.h"

namespace {

constexpr DWORD kBufferSize = 65536;

enum Operation { kConnect, kRead, kWrite, kOperationCount };

// All of this is guarded by OverlappedOperation::CompletionLock.
std::array<OverlappedOperation, kOperationCount> g_PipeOperations;
HANDLE g_PipeHandle = INVALID_HANDLE_VALUE;
std::string g_PipeName;
PipeCallbacks* g_Callbacks = nullptr;
bool g_Connected = false;
unsigned char g_ReadBuffer[kBufferSize];
std::deque<OutgoingFrame> g_SendQueue;

// The block of a pending write. Goes when the write has completed or the pipe's handle is closed.
OutgoingFrame g_FrameInFlight;

void HandleDisconnect();

void StartRead() {
    OverlappedOperation& read = g_PipeOperations[kRead];
    DWORD count = 0;
    if (ReadFile(g_PipeHandle, g_ReadBuffer, kBufferSize, &count, &read.m_Overlapped)) return;
    if (GetLastError() == ERROR_IO_PENDING) {
        SetLastError(ERROR_SUCCESS);
        read.m_IoPending = true;
        return;
    }
    ReportLastError("Error reading from pipe.");
    HandleDisconnect();
}

void WriteFrame(OutgoingFrame frame) {
    if (!g_Connected) {
        Log("Can't write; not connected.");
        return;
    }
    OverlappedOperation& write = g_PipeOperations[kWrite];
    DWORD count = 0;
    if (WriteFile(g_PipeHandle, frame.m_Data.get(), frame.m_Size, &count, &write.m_Overlapped)) return;
    if (GetLastError() == ERROR_IO_PENDING) {
        SetLastError(ERROR_SUCCESS);
        write.m_IoPending = true;
        g_FrameInFlight = std::move(frame);
        return;
    }
    ReportLastError("Error writing to pipe.");
    HandleDisconnect();
}

void OnReadCompleted() {
    OverlappedOperation& read = g_PipeOperations[kRead];
    read.m_IoPending = false;
    DWORD count = 0;
    if (!GetOverlappedResult(g_PipeHandle, &read.m_Overlapped, &count, FALSE)) {
        ReportLastError("Failed to read from pipe.");
        HandleDisconnect();
        return;
    }
    if (count < kBufferSize - 1) g_ReadBuffer[count] = '\0';
    if (g_Callbacks != nullptr) g_Callbacks->OnData(g_ReadBuffer, count);
    // An answer that couldn't be written has ended this connection, and the pipe already listens for the next one.
    if (g_Connected) StartRead();
}

void OnWriteCompleted() {
    OverlappedOperation& write = g_PipeOperations[kWrite];
    DWORD count = 0;
    write.m_IoPending = false;
    if (!GetOverlappedResult(g_PipeHandle, &write.m_Overlapped, &count, FALSE)) {
        if (GetLastError() == ERROR_IO_INCOMPLETE) {
            // The signal was that of an earlier write, which had completed at once; this one is still under way.
            SetLastError(ERROR_SUCCESS);
            write.m_IoPending = true;
            return;
        }
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

void OnConnectCompleted() {
    Log("Pipe connected.");
    g_PipeOperations[kConnect].Cleanup(true);
    g_PipeOperations[kRead].Initialize(OnReadCompleted, false);
    g_PipeOperations[kWrite].Initialize(OnWriteCompleted, false);
    g_Connected = true;
    if (g_Callbacks != nullptr) {
        g_Callbacks->OnConnected();
        g_Callbacks->OnClientHandle(g_PipeHandle);
    }
    StartRead();
}

// Ends the connection and listens for the next one.
void HandleDisconnect() {
    Log("Disconnected.");
    g_Connected = false;
    g_PipeOperations[kRead].Cleanup(true);
    g_PipeOperations[kWrite].Cleanup(true);
    if (g_PipeHandle != INVALID_HANDLE_VALUE && !DisconnectNamedPipe(g_PipeHandle)) {
        ReportLastError("Failed to disconnect pipe.");
    }
    NamedPipeServer::Destroy();
    NamedPipeServer::Create(g_PipeName, g_Callbacks);
    if (g_Callbacks != nullptr) g_Callbacks->OnDisconnected();
}

struct Outcome {
    bool succeeded;
    DWORD error;  // of the call that failed
};

Outcome Listen() {
    Log("Connecting pipe...");
    OverlappedOperation& connect = g_PipeOperations[kConnect];
    connect.Initialize(OnConnectCompleted, true);
    if (ConnectNamedPipe(g_PipeHandle, &connect.m_Overlapped)) {
        Log("Connected pipe.");
        return {true, ERROR_SUCCESS};
    }
    if (GetLastError() == ERROR_IO_PENDING) {
        SetLastError(ERROR_SUCCESS);
        Log("Waiting for pipe to connect...");
        connect.m_IoPending = true;
        return {true, ERROR_SUCCESS};
    }
    const DWORD error = ReportLastError("Unable to connect pipe.");
    Log("Unable to connect pipe: %d (0x%x)", static_cast<int>(error), static_cast<unsigned>(error));
    connect.Cleanup(false);
    return {false, error};
}

Outcome CreateAndListen() {
    PipeSecurity security;
    g_PipeHandle = CreateNamedPipeA(g_PipeName.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                    PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_ACCEPT_REMOTE_CLIENTS, 1,
                                    kBufferSize, kBufferSize, 0, security.Attributes());
    if (g_PipeHandle == INVALID_HANDLE_VALUE) return {false, ReportLastError("Unable to create pipe.")};
    return Listen();
}

}  // namespace

bool NamedPipeServer::Create(const std::string& name, PipeCallbacks* callbacks) {
    const std::lock_guard lock(OverlappedOperation::CompletionLock());
    Log("Creating pipe [%s]", name.c_str());
    g_PipeName = name;
    g_Callbacks = callbacks;
    const Outcome outcome = CreateAndListen();
    if (!outcome.succeeded) SetLastError(outcome.error);
    return outcome.succeeded;
}

bool NamedPipeServer::Destroy() {
    const std::lock_guard lock(OverlappedOperation::CompletionLock());
    Log("Destroying pipe...");
    for (OverlappedOperation& operation : g_PipeOperations) operation.Cleanup(false);
    bool closed = true;
    if (g_PipeHandle != INVALID_HANDLE_VALUE && !CloseHandle(g_PipeHandle)) {
        ReportLastError("Unable to close pipe handle.");
        closed = false;
    }
    g_PipeHandle = INVALID_HANDLE_VALUE;
    if (closed) g_FrameInFlight = {};
    while (!g_SendQueue.empty()) g_SendQueue.pop_front();
    return closed;
}

bool NamedPipeServer::Send(OutgoingFrame& frame) {
    const std::lock_guard lock(OverlappedOperation::CompletionLock());
    if (!g_Connected) {
        Log("Can't send message - not connected.");
        return false;
    }
    if (frame.m_Data == nullptr || frame.m_Size == 0) {
        Log("Invalid message specified.");
        return false;
    }
    if (g_PipeOperations[kWrite].m_IoPending) {
        g_SendQueue.push_back(std::move(frame));
    } else {
        WriteFrame(std::move(frame));
    }
    return true;
}

void NamedPipeServer::StopDeliveries() {
    std::array<HANDLE, kOperationCount> waits;
    {
        // All three in one go: a completion in between could arm another.
        const std::lock_guard lock(OverlappedOperation::CompletionLock());
        for (std::size_t i = 0; i < kOperationCount; ++i) waits[i] = g_PipeOperations[i].Disarm();
        g_Callbacks = nullptr;
        g_Connected = false;
    }
    // Without the lock: the callback that this waits for may be waiting for it.
    for (const HANDLE wait : waits) {
        if (wait != INVALID_HANDLE_VALUE && !UnregisterWaitEx(wait, INVALID_HANDLE_VALUE)) {
            ReportLastError("Failed to unregister overlapped wait.");
        }
    }
}
