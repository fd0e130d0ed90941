#pragma once

// The program's centre: brings Steam and the pipe up, holds the state of the conversation with the launcher, and takes
// everything down again. One object lives on the worker's stack.

#include <atomic>
#include <cstdint>

#include "pipe/pipe_callbacks.h"
#include "steam/steam_api.h"

class SteamService {
  public:
    enum class State : std::int32_t {
        Idle = 0,               // before Init has brought Steam up
        WaitForLauncher = 1,    // Steam is up, no launcher has connected yet
        WaitForGameLaunch = 2,  // a launcher has connected at least once
        Invalid = 3,            // Init failed
    };

    SteamService() = default;

    // Afterwards neither a completion of the pipe nor the time-out touches the object, whatever state it was left in.
    ~SteamService();
    SteamService(const SteamService&) = delete;
    SteamService& operator=(const SteamService&) = delete;

    // All three run on the worker. Init is true when the pipe is there; it logs what went wrong. Shutdown follows a
    // successful Init only.
    bool Init();
    void Tick();
    void Shutdown();

    // Written by the worker until the pipe exists or can't be created, otherwise inside the pipe's completions.
    State m_State = State::Idle;

    // The pipe server keeps a pointer to it from Init until its deliveries stop.
    PipeCallbacks m_PipeCallbacks;

    sysSteamApi m_SteamApi;

    // Set on a wait thread when the time-out has run out, never cleared; the worker polls it.
    std::atomic<bool> m_ReadyToExit = false;

  private:
    void Quiesce();
    void InstallPipeCallbacks();
    bool CreatePipe();
    bool Fail();
    void SetState(State newState);
    void OnConnected();     // wait thread
    void OnDisconnected();  // wait thread
};
