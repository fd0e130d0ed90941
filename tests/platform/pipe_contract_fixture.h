#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/open_pipe.h"
#include "tests/platform/counted_wait.h"

// One overlapped request with its event.
class Request {
  public:
    Request() { m_Overlapped.hEvent = m_Event.Get(); }

    OVERLAPPED* Record() { return &m_Overlapped; }

    bool Signalled() const { return CountedWait(m_Event, WT_EXECUTEONLYONCE).Reaches(1); }
    bool NotSignalled() const {
        const CountedWait wait(m_Event, WT_EXECUTEONLYONCE);
        return WaitThreadHasComeRound() && wait.Signals() == 0;
    }

    // The outcome so far: 0 or the error.
    DWORD Error(HANDLE pipe) {
        SetLastError(ERROR_SUCCESS);
        return GetOverlappedResult(pipe, &m_Overlapped, &m_Count, FALSE) ? ERROR_SUCCESS : GetLastError();
    }
    DWORD Count() const { return m_Count; }

  private:
    const OwnedHandle m_Event = MakeEvent(true);
    OVERLAPPED m_Overlapped = {};
    DWORD m_Count = 0;
};

// A pipe with a name of its own, and the calls on it. Each gives 0 when it was done at once, else the error.
class PipeContract : public testing::Test {
  protected:
    static constexpr DWORD kCapacity = 65536;

    PipeContract() {
        static int number = 0;
        name = "tollmere-contract-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
        Create();
    }
    ~PipeContract() override { Close(); }

    HANDLE TryCreate(SECURITY_ATTRIBUTES* attributes = nullptr) const {
        return CreateNamedPipeA(("\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, kCapacity, kCapacity, 0,
                                attributes);
    }
    void Create() { pipe = TryCreate(); }
    void Close() {
        if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
        pipe = INVALID_HANDLE_VALUE;
    }
    DWORD Disconnect() const { return DisconnectNamedPipe(pipe) ? ERROR_SUCCESS : GetLastError(); }

    DWORD Connect(Request& request) const {
        return ConnectNamedPipe(pipe, request.Record()) ? ERROR_SUCCESS : GetLastError();
    }
    DWORD Read(Request& request) {
        buffer.assign(kCapacity, '\0');
        DWORD count = 0;
        return ReadFile(pipe, buffer.data(), kCapacity, &count, request.Record()) ? ERROR_SUCCESS : GetLastError();
    }
    DWORD Write(Request& request, const std::string& bytes) const {
        DWORD count = 0;
        const DWORD size = static_cast<DWORD>(bytes.size());
        return WriteFile(pipe, bytes.data(), size, &count, request.Record()) ? ERROR_SUCCESS : GetLastError();
    }

    // What the read has brought, once its event is signalled; or the error as a text.
    std::string Received(Request& request) {
        if (!request.Signalled()) return "(nothing)";
        const DWORD error = request.Error(pipe);
        return error == ERROR_SUCCESS ? buffer.substr(0, request.Count()) : "error " + std::to_string(error);
    }

    bool ClientCame() {
        Request connect;
        const DWORD error = Connect(connect);
        if (!support::OpenPipe(client, name, support::Limit())) return false;
        return error == ERROR_IO_PENDING && connect.Signalled() && connect.Error(pipe) == ERROR_SUCCESS;
    }
    bool ClientWrites(const std::string& bytes) {
        return client.Write(bytes, support::Limit()) == launcher::Outcome::Done;
    }
    std::string ClientReads(std::size_t size) {
        std::string bytes;
        while (bytes.size() < size && client.Read(bytes, support::Limit()) == launcher::Outcome::Done) {
        }
        return bytes;
    }

    std::string name;
    HANDLE pipe = INVALID_HANDLE_VALUE;
    launcher::PipeClient client;
    std::string buffer;  // of the latest read
};
