#pragma once

// The one object through which the process reaches Steam: the mapped exports, the interfaces, the two callbacks, and
// what was read of the user.
//
// Worker only, with one exception: the identity (m_SteamId, m_PersonaName) and the ticket's text and length are written
// by InitClass and never again, and wait threads read them once the pipe exists, which is later.

#include <cstdint>
#include <string>

#include "diagnostics/text.h"
#include "steam/steam_callback.h"
#include "steam/steam_client_abi.h"

class sysSteamApi {
  public:
    static constexpr std::uint32_t kTicketCapacity = 1024;  // bytes

    sysSteamApi() = default;
    sysSteamApi(const sysSteamApi&) = delete;
    sysSteamApi& operator=(const sysSteamApi&) = delete;

    // Finds the app id and the game directory, loads the DLL from beside the executable, starts the API and reads the
    // user. False when a step failed. True with m_Initialized false when there is no app id. Logs what went wrong.
    bool InitClass();

    // The tear-down, after an InitClass that set m_Initialized.
    void ShutdownClass();

    // The worker's two jobs on each tick while m_Initialized is set.
    void RunCallbacks();
    void CheckTicketTimeout();

    // Null until mapped; a failed start leaves those that were found.
    SteamAPI_Init_t m_FnInit = nullptr;
    SteamAPI_Shutdown_t m_FnShutdown = nullptr;
    SteamAPI_RunCallbacks_t m_FnRunCallbacks = nullptr;
    SteamAPI_RegisterCallback_t m_FnRegisterCallback = nullptr;
    SteamAPI_UnregisterCallback_t m_FnUnregisterCallback = nullptr;
    SteamClient_t m_FnSteamClient = nullptr;
    SteamAPI_GetHSteamUser_t m_FnGetHSteamUser = nullptr;
    SteamAPI_GetHSteamPipe_t m_FnGetHSteamPipe = nullptr;

    // The DLL's objects; m_UserStats and m_Controller may stay null on a working system.
    ISteamClient* m_Client = nullptr;
    ISteamUser* m_User = nullptr;
    ISteamFriends* m_Friends = nullptr;
    ISteamUtils* m_Utils = nullptr;
    ISteamApps* m_Apps = nullptr;
    ISteamUserStats* m_UserStats = nullptr;
    ISteamController* m_Controller = nullptr;

    sysSteamCallback<sysSteamApi, GameOverlayActivated_t, 0> m_OverlayCallback{this};
    sysSteamCallback<sysSteamApi, GetAuthSessionTicketResponse_t, 0> m_TicketCallback{this};

    HSteamUser m_HSteamUser = 0;
    HSteamPipe m_HSteamPipe = 0;
    bool m_Initialized = false;
    char m_Location[kPathCapacity] = {};  // the game directory, UTF-8, or empty
    std::uint64_t m_SteamId = 0;
    std::uint32_t m_AppId = 0;  // 0: none
    char m_PersonaName[129] = {};
    bool m_OverlayActive = false;
    bool m_Offline = false;
    HAuthTicket m_AuthTicket = 0;                     // the ticket that awaits its response, else 0
    char m_TicketText[2 * kTicketCapacity + 1] = {};  // upper-case hexadecimal, two digits a byte
    std::uint32_t m_TicketLength = 0;                 // bytes
    std::uint32_t m_TicketRequestTime = 0;            // timeGetTime at the request; 0: no time-out is running

    // The loaded DLL, or null. It stays loaded after a failed start.
    static HMODULE ms_SteamDll;

  private:
    void ResolveAppId();
    void ResolveLocation();
    bool SetLocation(const std::string& location);

    bool StartSteam();
    bool LoadSteamDll();
    bool MapExports();
    template <class Function>
    bool MapExport(Function& function, const char* name);
    bool InitInCurrentDirectory();
    bool InitInGameDirectory();
    bool RequestInterfaces();
    void ClearInterfaces();
    void ReadIdentity();
    void RequestAuthTicket();

    void OnGameOverlayActivated(void* payload);
    void OnGetAuthSessionTicketResponse(void* payload);
};
