#include "telemetry/steam_action_events.h"

#include "platform/windows_api.h"
#include "steam/steam_api.h"
#include "telemetry/json/json_writer.h"
#include "telemetry/telemetry.h"

namespace {

bool Write(JsonWriter& writer, const IntPair& pair) {
    return writer.WriteInt(pair.key, pair.value);
}
bool Write(JsonWriter& writer, const BoolPair& pair) {
    return writer.WriteBool(pair.key, pair.value);
}
bool Write(JsonWriter& writer, const UInt64Pair& pair) {
    return writer.WriteUInt64(pair.key, pair.value);
}

std::uint64_t PresentFileTime() {
    SYSTEMTIME time;
    GetSystemTime(&time);
    FILETIME fileTime = {};
    SystemTimeToFileTime(&time, &fileTime);
    return static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32 | fileTime.dwLowDateTime;
}

template <class... Pairs>
bool Record(const Pairs&... pairs) {
    const LockGuard lock(g_TelemetryLock);
    if (g_TelemetrySource == nullptr) return false;
    // No object is begun: the text is the members alone.
    char text[16384] = {};
    JsonWriter writer;
    writer.m_Buffer = text;
    writer.m_Capacity = sizeof text;
    if (!(Write(writer, pairs) && ...)) return false;
    return QueueEvent("STEAM_ACTION", text, PresentFileTime());
}

}  // namespace

bool RecordSteamAction(const IntPair& id, const IntPair& pair) {
    return Record(id, pair);
}

bool RecordSteamInitResult(const IntPair& id, const BoolPair& pair) {
    return Record(id, pair);
}

bool RecordSteamStatusEvent(const IntPair& id, const IntPair& sa, const BoolPair& sd, const BoolPair& sp,
                            const BoolPair& so, const UInt64Pair& si, const BoolPair& sl, const BoolPair& st,
                            const BoolPair& ss) {
    return Record(id, sa, sd, sp, so, si, sl, st, ss);
}

void RecordSteamStatus(const sysSteamApi& api) {
    RecordSteamStatusEvent({"id", 3}, {"sa", static_cast<std::int32_t>(api.m_AppId)},
                           {"sd", sysSteamApi::ms_SteamDll != nullptr}, {"sp", api.m_FnInit != nullptr},
                           {"so", api.m_Offline}, {"si", api.m_SteamId}, {"sl", api.m_Location[0] != '\0'},
                           {"st", api.m_TicketLength > 0}, {"ss", api.m_Initialized});
}
