// Where the app id and the game directory come from.

#include <cstring>

#include "diagnostics/log.h"
#include "host/options.h"
#include "host/process_probes.h"
#include "steam/steam_api.h"

// 0 if the variable is missing, is too long or holds no number.
static std::uint32_t ReadAppIdFromEnvironment() {
    char text[64] = {};
    const DWORD length = GetEnvironmentVariableA("SteamAppId", text, sizeof text);
    if (length == 0) {
        SetLastError(ERROR_SUCCESS);
        Log("Could not find steam app id from environment.");
        return 0;
    }
    unsigned int appId = 0;
    // With a value that is too long, the length is the one needed and the buffer holds nothing of use.
    if (length >= sizeof text || ScanText(text, "%u", &appId) != 1) return 0;
    Log("Processed SteamAppID from Environment: %u", appId);
    return appId;
}

void sysSteamApi::ResolveAppId() {
    if (m_AppId != 0) return;
    const std::uint32_t fromEnvironment = ReadAppIdFromEnvironment();
    if (!g_SteamAppID.m_WasSet) {
        m_AppId = fromEnvironment;
        return;
    }
    m_AppId = static_cast<std::uint32_t>(g_SteamAppID.m_Value);
    if (m_AppId == 0) return;
    // Steam reads the variable, and the game inherits it.
    char text[16];
    FormatText(text, sizeof text, "%u", static_cast<unsigned>(m_AppId));
    SetEnvironmentVariableA("SteamAppId", text);
    Log("Processed SteamAppID from Command Line: %u", static_cast<unsigned>(m_AppId));
}

// A location that doesn't fit is not cut: a part of a path is another path.
bool sysSteamApi::SetLocation(const std::string& location) {
    if (location.size() >= sizeof m_Location) {
        Log("Steam location is too long and will not be used.");
        return false;
    }
    std::memcpy(m_Location, location.c_str(), location.size() + 1);
    return true;
}

void sysSteamApi::ResolveLocation() {
    if (m_Location[0] != '\0') return;
    if (g_SteamLocation.m_WasSet) {
        if (SetLocation(g_SteamLocation.m_Value)) Log("Processed Steam Location from Command Line: %s", m_Location);
        return;
    }

    WCHAR value[kPathCapacity] = {};
    const DWORD length = GetEnvironmentVariableW(WIDE_TEXT("SteamLocation"), value, kPathCapacity);
    if (length >= kPathCapacity) {
        Log("Steam location is too long and will not be used.");
    } else if (length != 0) {
        if (SetLocation(WideToUtf8(value))) Log("Processed Steam Location from Environment: %s", m_Location);
    } else {
        SetLastError(ERROR_SUCCESS);
        Log("Could not find steam location from environment.");
        GetParentProcessDirectory(m_Location);
        Log("Processed Parent Process Location: %s", m_Location);
    }
}
