#include "steam/steam_api.h"

#include <cstring>

#include "diagnostics/log.h"
#include "platform/error_mode.h"
#include "telemetry/steam_action_events.h"

HMODULE sysSteamApi::ms_SteamDll = nullptr;

void RegisterWithSteam(sysSteamApi* owner, CCallbackBase* callback, int callbackId) {
    if (owner != nullptr && owner->m_FnRegisterCallback != nullptr) owner->m_FnRegisterCallback(callback, callbackId);
}

void UnregisterFromSteam(sysSteamApi* owner, CCallbackBase* callback) {
    if (owner != nullptr && owner->m_FnUnregisterCallback != nullptr) owner->m_FnUnregisterCallback(callback);
}

bool sysSteamApi::InitClass() {
    ResolveAppId();
    ResolveLocation();
    Log("InitClass :: AppId=%d", static_cast<int>(m_AppId));
    Log("InitClass :: Location=%s", m_Location);
    if (m_AppId == 0) {
        Log("Invalid steam app id");
        Log("Not enough info provided to run Steam.");
        ClearInterfaces();
        return true;
    }
    if (!StartSteam()) {
        Log("Error initializing Steam.");
        ClearInterfaces();
        return false;
    }
    Log("Steam initialized successfully");
    m_Initialized = true;
    return true;
}

bool sysSteamApi::StartSteam() {
    // For our library and for those that its initialization loads.
    const NoErrorDialogs scope;
    if (!LoadSteamDll() || !MapExports()) return false;
    if (!InitInCurrentDirectory() && !InitInGameDirectory()) {
        RecordSteamInitResult({"id", 2}, {"as", false});
        return false;
    }
    Log("SteamAPI_Init completed, requesting Steam interfaces.");
    if (!RequestInterfaces()) return false;
    m_OverlayCallback.Register(this, &sysSteamApi::OnGameOverlayActivated);
    m_TicketCallback.Register(this, &sysSteamApi::OnGetAuthSessionTicketResponse);
    ReadIdentity();
    RequestAuthTicket();
    return true;
}

bool sysSteamApi::LoadSteamDll() {
    WCHAR executable[kPathCapacity + 1] = {};  // terminated even when a longer path is cut
    const DWORD length = GetModuleFileNameW(GetModuleHandleW(nullptr), executable, kPathCapacity);
    WideString path = executable;
    const std::size_t separator = path.find_last_of(WIDE_TEXT("\\/"));
    if (separator != WideString::npos && separator > 0) path.resize(separator);
    path += WIDE_TEXT("\\steam_api64.dll");

    // A cut path is another path: what lies there isn't ours.
    if (length > 0 && length < kPathCapacity) {
        ms_SteamDll = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    if (ms_SteamDll == nullptr) Log("Steam DLL could not be loaded from '%s'", WideToUtf8(path.c_str()).c_str());
    return ms_SteamDll != nullptr;
}

template <class Function>
bool sysSteamApi::MapExport(Function& function, const char* name) {
    // By way of void*: the compiler warns of a cast between function types, and here every type is foreign.
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(ms_SteamDll, name)));
    if (function == nullptr) Log("Could not map function: %s", name);
    return function != nullptr;
}

// The first one missing ends the mapping.
bool sysSteamApi::MapExports() {
    return MapExport(m_FnInit, "SteamAPI_Init") &&                              //
           MapExport(m_FnShutdown, "SteamAPI_Shutdown") &&                      //
           MapExport(m_FnRegisterCallback, "SteamAPI_RegisterCallback") &&      //
           MapExport(m_FnUnregisterCallback, "SteamAPI_UnregisterCallback") &&  //
           MapExport(m_FnGetHSteamUser, "SteamAPI_GetHSteamUser") &&            //
           MapExport(m_FnGetHSteamPipe, "SteamAPI_GetHSteamPipe") &&            //
           MapExport(m_FnRunCallbacks, "SteamAPI_RunCallbacks") &&              //
           MapExport(m_FnSteamClient, "SteamClient");
}

bool sysSteamApi::InitInCurrentDirectory() {
    Log("Attempting initialization of Steam API in current directory");
    return m_FnInit();
}

// Steam looks for files of the game in the current directory.
bool sysSteamApi::InitInGameDirectory() {
    if (m_Location[0] == '\0') return false;
    const WideString location = Utf8ToWide(m_Location);
    if (!PathFileExistsW(location.c_str())) return false;
    WCHAR saved[kPathCapacity];
    const DWORD length = GetCurrentDirectoryW(kPathCapacity, saved);
    // A directory that doesn't fit couldn't be restored.
    if (length == 0 || length >= kPathCapacity) return false;

    bool started = false;
    if (SetCurrentDirectoryW(location.c_str())) {
        Log("Attempting initialization of Steam API from game directory: %s", m_Location);
        started = m_FnInit();
    }
    SetCurrentDirectoryW(saved);
    return started;
}

bool sysSteamApi::RequestInterfaces() {
    m_Client = m_FnSteamClient();
    if (m_Client == nullptr) return false;
    m_HSteamUser = m_FnGetHSteamUser();
    m_HSteamPipe = m_FnGetHSteamPipe();
    if (m_HSteamUser == 0 || m_HSteamPipe == 0) return false;

    m_User = m_Client->GetISteamUser(m_HSteamUser, m_HSteamPipe, kSteamUserVersion);
    m_Friends = m_Client->GetISteamFriends(m_HSteamUser, m_HSteamPipe, kSteamFriendsVersion);
    m_Utils = m_Client->GetISteamUtils(m_HSteamPipe, kSteamUtilsVersion);
    m_Apps = m_Client->GetISteamApps(m_HSteamUser, m_HSteamPipe, kSteamAppsVersion);
    m_UserStats = m_Client->GetISteamUserStats(m_HSteamUser, m_HSteamPipe, kSteamUserStatsVersion);
    m_Controller = m_Client->GetISteamController(m_HSteamUser, m_HSteamPipe, kSteamControllerVersion);
    return m_User != nullptr && m_Friends != nullptr && m_Utils != nullptr && m_Apps != nullptr;
}

void sysSteamApi::ClearInterfaces() {
    m_Client = nullptr;
    m_User = nullptr;
    m_Friends = nullptr;
    m_Utils = nullptr;
    m_Apps = nullptr;
    m_UserStats = nullptr;
    m_Controller = nullptr;
}

void sysSteamApi::ReadIdentity() {
    m_Offline = !m_User->BLoggedOn();
    CSteamID steamId = {};
    m_User->GetSteamID(&steamId);
    m_SteamId = steamId.m_Value;
    // Whatever the client gives, the copy ends within the field and with a terminator.
    if (const char* const name = m_Friends->GetPersonaName()) {
        std::strncpy(m_PersonaName, name, sizeof m_PersonaName - 1);
    }
}

void sysSteamApi::RunCallbacks() {
    if (m_FnRunCallbacks != nullptr) m_FnRunCallbacks();
}

void sysSteamApi::OnGameOverlayActivated(void* payload) {
    if (payload == nullptr) return;
    m_OverlayActive = static_cast<const GameOverlayActivated_t*>(payload)->m_bActive != 0;
    Log("Steam Overlay: %s", m_OverlayActive ? "activated" : "closed");
}

void sysSteamApi::ShutdownClass() {
    m_OverlayCallback.Unregister();
    m_TicketCallback.Unregister();
    if (m_FnShutdown != nullptr) m_FnShutdown();
    if (ms_SteamDll != nullptr) {
        FreeLibrary(ms_SteamDll);
        ms_SteamDll = nullptr;
    }
    m_AuthTicket = 0;
    m_TicketRequestTime = 0;
    m_Initialized = false;
}
