#include "platform/posix/pipe_end.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/posix/last_error.h"

namespace posix_layer {

namespace {

constexpr DWORD kPipeCapacity = 65536;

// The system doubles it, counts its own overhead into it, and reports a socket as writable when no more than a quarter
// is in use. So 64 KiB in few writes always fit, and whoever waits for room is woken up only when there is some.
constexpr int kSocketBufferSize = 98304;

bool HasEvent(int descriptor, short events) {
    pollfd entry = {descriptor, events, 0};
    return poll(&entry, 1, 0) == 1;
}

// A child that is just being started may have a copy of the descriptor: the other end has to learn of the end at once.
void EndSocket(int& descriptor, WatchId& watch) {
    RemoveWatch(std::exchange(watch, kNoWatch));
    if (descriptor < 0) return;
    shutdown(descriptor, SHUT_RDWR);
    close(std::exchange(descriptor, -1));
}

}  // namespace

std::shared_ptr<PipeEnd> PipeEnd::Create(const std::string& pipeName) {
    std::optional<PipePlace> place = PipePlace::Take(pipeName);
    if (!place) return nullptr;
    const std::shared_ptr<PipeEnd> pipe(new PipeEnd(std::move(*place)));
    const std::lock_guard lock(LayerLock());
    return StartWaitThread() && pipe->Listen() ? pipe : nullptr;
}

PipeEnd::~PipeEnd() = default;

bool PipeEnd::Listen() {
    m_Listener = m_Place->Listen();
    if (m_Listener < 0) return false;
    m_State = State::Listening;
    // Watched from now on, not from ConnectNamedPipe on: with the first client in, the others are refused at once.
    m_ListenerWatch = AddWatch(m_Listener, [this] {
        Accept();
        if (m_State == State::Connected) m_Connect.Complete(STATUS_SUCCESS, 0);
    });
    ArmWatch(m_ListenerWatch, EPOLLIN);
    return true;
}

void PipeEnd::Accept() {
    if (m_State != State::Listening) return;
    if (!HasEvent(m_Listener, POLLIN)) {
        ArmWatch(m_ListenerWatch, EPOLLIN);
        return;
    }
    // One waits, and there is room for no more. It mustn't leave its place to another, who would be let in and then
    // thrown out: what is shut down refuses all who come, but still gives those who are there.
    shutdown(m_Listener, SHUT_RD);
    // Without a descriptor to be had it counts as lost at its first read.
    m_Client = accept4(m_Listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    // The file stays: who comes while a client is served finds somebody there, who refuses.
    EndSocket(m_Listener, m_ListenerWatch);
    setsockopt(m_Client, SOL_SOCKET, SO_SNDBUF, &kSocketBufferSize, sizeof kSocketBufferSize);
    m_ClientWatch = AddWatch(m_Client, [this] { OnClientReady(); });
    m_SentSinceEmpty = 0;
    m_State = State::Connected;
}

BOOL PipeEnd::Connect(OVERLAPPED* overlapped) {
    const std::lock_guard lock(LayerLock());
    if (!m_Connect.Begin(overlapped)) return FALSE;
    if (m_State == State::Disconnected && !Listen()) return m_Connect.Fail(GetLastError());
    Accept();
    if (m_State == State::Connected)
        return m_Connect.Fail(HasEvent(m_Client, 0) ? ERROR_NO_DATA : ERROR_PIPE_CONNECTED);
    SetLastError(ERROR_IO_PENDING);
    return FALSE;
}

BOOL PipeEnd::Disconnect() {
    const std::lock_guard lock(LayerLock());
    if (m_State == State::Disconnected) return WithLastError(ERROR_PIPE_NOT_CONNECTED, FALSE);
    EndConnection(STATUS_PIPE_DISCONNECTED);
    return TRUE;
}

void PipeEnd::OnClose() {
    const std::lock_guard lock(LayerLock());
    EndConnection(STATUS_CANCELLED);
    m_Place.reset();
}

void PipeEnd::EndConnection(ULONG_PTR status) {
    m_Connect.Complete(status, 0);
    m_Read.Complete(status, 0);
    m_Write.Complete(status, 0);
    EndSocket(m_Listener, m_ListenerWatch);
    EndSocket(m_Client, m_ClientWatch);
    m_State = State::Disconnected;
}

BOOL PipeEnd::Read(void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const std::lock_guard lock(LayerLock());
    if (!m_Read.Begin(overlapped)) return FALSE;
    Accept();
    if (m_State == State::Listening) return m_Read.Fail(ERROR_PIPE_LISTENING);
    if (m_State == State::Disconnected) return m_Read.Fail(ERROR_PIPE_NOT_CONNECTED);
    DWORD received = 0;
    const Progress progress = Receive(buffer, size, received);
    if (count != nullptr) *count = received;
    if (progress == Progress::Gone) return m_Read.Fail(ERROR_BROKEN_PIPE);
    if (progress == Progress::Done) {
        m_Read.Complete(STATUS_SUCCESS, received);
        return TRUE;
    }
    m_ReadBuffer = buffer;
    m_ReadSize = size;
    ArmForPending();
    SetLastError(ERROR_IO_PENDING);
    return FALSE;
}

BOOL PipeEnd::Write(const void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const std::lock_guard lock(LayerLock());
    if (!m_Write.Begin(overlapped)) return FALSE;
    Accept();
    if (m_State == State::Listening) return m_Write.Fail(ERROR_PIPE_LISTENING);
    if (m_State == State::Disconnected) return m_Write.Fail(ERROR_PIPE_NOT_CONNECTED);
    m_WriteBuffer = static_cast<const char*>(buffer);
    m_WriteSize = size;
    m_Written = 0;
    const Progress progress = SendRest();
    if (count != nullptr) *count = progress == Progress::Done ? size : 0;
    if (progress == Progress::Gone) return m_Write.Fail(ERROR_NO_DATA);
    if (progress == Progress::Done) {
        m_Write.Complete(STATUS_SUCCESS, size);
        return TRUE;
    }
    ArmForPending();
    SetLastError(ERROR_IO_PENDING);
    return FALSE;
}

void PipeEnd::OnClientReady() {
    if (m_Read.IsPending()) {
        DWORD count = 0;
        const Progress progress = Receive(m_ReadBuffer, m_ReadSize, count);
        if (progress == Progress::Done) m_Read.Complete(STATUS_SUCCESS, count);
        if (progress == Progress::Gone) m_Read.Complete(STATUS_PIPE_BROKEN, 0);
    }
    if (m_Write.IsPending()) {
        const Progress progress = SendRest();
        if (progress == Progress::Done) m_Write.Complete(STATUS_SUCCESS, m_WriteSize);
        if (progress == Progress::Gone) m_Write.Complete(STATUS_PIPE_BROKEN, 0);
    }
    ArmForPending();
}

void PipeEnd::ArmForPending() {
    std::uint32_t events = 0;
    if (m_Read.IsPending()) events |= EPOLLIN;
    if (m_Write.IsPending()) events |= EPOLLOUT;
    if (events != 0) ArmWatch(m_ClientWatch, events);
}

PipeEnd::Progress PipeEnd::Receive(void* buffer, DWORD size, DWORD& count) const {
    if (size == 0) return Progress::Done;  // to the system, 0 bytes read are the end of the stream
    const ssize_t result = recv(m_Client, buffer, size, MSG_DONTWAIT);
    if (result < 0 && errno == EAGAIN) return Progress::Blocked;
    if (result <= 0) return Progress::Gone;
    count = static_cast<DWORD>(result);
    return Progress::Done;
}

PipeEnd::Progress PipeEnd::SendRest() {
    while (m_Written < m_WriteSize) {
        const DWORD part = std::min(m_WriteSize - m_Written, FreeRoom());
        if (part == 0) return Progress::Blocked;
        const ssize_t sent = send(m_Client, m_WriteBuffer + m_Written, part, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0) return errno == EAGAIN ? Progress::Blocked : Progress::Gone;
        m_Written += static_cast<DWORD>(sent);
        m_SentSinceEmpty = std::min(m_SentSinceEmpty + static_cast<DWORD>(sent), kPipeCapacity);
    }
    return Progress::Done;
}

// How much the client can be sent before 64 KiB of it are unread. The system tells how much memory the unread takes,
// which is more than its size, so the estimate never gives too much. It is asked only when that matters.
DWORD PipeEnd::FreeRoom() {
    if (m_WriteSize - m_Written <= kPipeCapacity - m_SentSinceEmpty) return kPipeCapacity - m_SentSinceEmpty;
    int memory = 0;
    ioctl(m_Client, SIOCOUTQ, &memory);
    if (memory == 0) m_SentSinceEmpty = 0;
    return kPipeCapacity - std::min({static_cast<DWORD>(memory), m_SentSinceEmpty, kPipeCapacity});
}

}  // namespace posix_layer
