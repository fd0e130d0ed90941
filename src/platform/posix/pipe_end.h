#pragma once

#include <memory>
#include <string>

#include "platform/posix/handle_table.h"
#include "platform/posix/overlapped_request.h"
#include "platform/posix/pipe_place.h"
#include "platform/posix/wait_thread.h"

namespace posix_layer {

// The server's end of a pipe: one instance, one client at a time. Any thread. The requests follow the calls of their
// names in windows_calls.h.
class PipeEnd : public Object {
  public:
    // Null, with the last error, if the place is taken or can't be listened at.
    static std::shared_ptr<PipeEnd> Create(const std::string& pipeName);
    ~PipeEnd() override;

    BOOL Connect(OVERLAPPED* overlapped);
    BOOL Disconnect();
    BOOL Read(void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped);
    BOOL Write(const void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped);

    // Ends what is pending, and the connection, and gives up the place.
    void OnClose() override;

  private:
    enum class State { Listening, Connected, Disconnected };
    enum class Progress { Done, Blocked, Gone };

    explicit PipeEnd(PipePlace place) : m_Place(std::move(place)) {}

    // All of these are called under LayerLock, which guards the members, too.
    bool Listen();
    void Accept();
    void EndConnection(ULONG_PTR status);
    void OnClientReady();
    void ArmForPending();
    Progress Receive(void* buffer, DWORD size, DWORD& count) const;
    Progress SendRest();
    DWORD FreeRoom();

    std::optional<PipePlace> m_Place;
    State m_State = State::Disconnected;
    int m_Listener = -1;
    int m_Client = -1;
    WatchId m_ListenerWatch = kNoWatch;
    WatchId m_ClientWatch = kNoWatch;

    OverlappedRequest m_Connect;
    OverlappedRequest m_Read;
    void* m_ReadBuffer = nullptr;
    DWORD m_ReadSize = 0;
    OverlappedRequest m_Write;
    const char* m_WriteBuffer = nullptr;
    DWORD m_WriteSize = 0;
    DWORD m_Written = 0;
    DWORD m_SentSinceEmpty = 0;  // since the client was last known to have read everything
};

}  // namespace posix_layer
