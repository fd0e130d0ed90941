#include "service/steam_service.h"

#include <memory>

#include "diagnostics/log.h"
#include "host/timed_shutdown.h"
#include "pipe/frame_router.h"
#include "pipe/named_pipe_server.h"
#include "pipe/subsystem_base.h"
#include "service/steam_subsystem.h"
#include "telemetry/steam_action_events.h"

static const char kPipeName[] = "\\\\.\\pipe\\TollmereSteamHelper";

static const char* StateName(SteamService::State state) {
    switch (state) {
        case SteamService::State::Idle:
            return "Idle";
        case SteamService::State::WaitForLauncher:
            return "WaitForLauncher";
        case SteamService::State::WaitForGameLaunch:
            return "WaitForGameLaunch";
        default:
            return "Invalid";
    }
}

SteamService::~SteamService() {
    Quiesce();
}

// From here on neither a completion nor the time-out runs. In this order: a completion may schedule the time-out.
void SteamService::Quiesce() {
    NamedPipeServer::StopDeliveries();
    StopTimedShutdown();
}

bool SteamService::Init() {
    Log("SteamService :: Init");
    g_LogRotationEnabled = true;

    g_Subsystems.push_back(std::make_unique<SteamSubsystem>(&m_SteamApi));
    g_Subsystems.back()->Init();

    if (!m_SteamApi.InitClass()) {
        Log("Failed to initialize Steam API");
        return Fail();
    }
    if (!m_SteamApi.m_Initialized) {
        Log("Steam did not initialize");
        return Fail();
    }

    ScheduleTimedShutdown(this);
    InstallPipeCallbacks();
    SetState(State::WaitForLauncher);
    if (!CreatePipe()) return Fail();
    RecordSteamStatus(m_SteamApi);
    return true;
}

void SteamService::InstallPipeCallbacks() {
    m_PipeCallbacks.OnConnected = [this] { OnConnected(); };
    m_PipeCallbacks.OnClientHandle = [](void*) { return true; };
    m_PipeCallbacks.OnData = RouteFrames;
    m_PipeCallbacks.OnDisconnected = [this] { OnDisconnected(); };
}

bool SteamService::CreatePipe() {
    if (NamedPipeServer::Create(kPipeName, &m_PipeCallbacks)) return true;
    const DWORD error = GetLastError();
    Log("Failed to create pipe.");
    RecordSteamAction({"id", 1}, {"pe", static_cast<std::int32_t>(error)});
    return false;
}

// The end of an Init that failed; always false.
bool SteamService::Fail() {
    SetState(State::Invalid);
    CancelTimedShutdown();
    RecordSteamStatus(m_SteamApi);
    return false;
}

void SteamService::Tick() {
    if (!m_SteamApi.m_Initialized) return;
    m_SteamApi.RunCallbacks();
    m_SteamApi.CheckTicketTimeout();
}

void SteamService::Shutdown() {
    Log("SteamService :: Shutdown");
    Quiesce();
    for (auto& subsystem : g_Subsystems) {
        subsystem->Shutdown();
        subsystem.reset();
    }
    g_Subsystems.clear();
    NamedPipeServer::Destroy();
    if (m_SteamApi.m_Initialized) m_SteamApi.ShutdownClass();
}

void SteamService::SetState(State newState) {
    Log("SteamService :: SetState (%d -> %d) (%s -> %s)", static_cast<int>(m_State), static_cast<int>(newState),
        StateName(m_State), StateName(newState));
    m_State = newState;
}

void SteamService::OnConnected() {
    Log("SteamService :: OnConnected");
    if (m_State == State::WaitForLauncher) SetState(State::WaitForGameLaunch);
    CancelTimedShutdown();
}

void SteamService::OnDisconnected() {
    Log("Pipe disconnected.");
    ScheduleTimedShutdown(this);
}
