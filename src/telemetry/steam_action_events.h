#pragma once

// The "STEAM_ACTION" events: where a start went wrong, or how far it got. Each builder queues one event with the
// members in the order of its arguments and the present time; false, without a line, if telemetry isn't published. Any
// thread.
//
//   id 0: the message window could not be created    we: the error code
//   id 1: the pipe could not be created              pe: the error code
//   id 2: SteamAPI_Init gave false on every attempt  as: false
//   id 3: the start is at its end, however it went   sa: app id, sd: DLL loaded, sp: SteamAPI_Init mapped,
//                                                    so: offline, si: Steam id, sl: location known, st: ticket there,
//                                                    ss: Steam is up

#include <cstdint>

class sysSteamApi;

struct IntPair {
    const char* key;
    std::int32_t value;
};
struct BoolPair {
    const char* key;
    bool value;
};
struct UInt64Pair {
    const char* key;
    std::uint64_t value;
};

bool RecordSteamAction(const IntPair& id, const IntPair& pair);
bool RecordSteamInitResult(const IntPair& id, const BoolPair& pair);
bool RecordSteamStatusEvent(const IntPair& id, const IntPair& sa, const BoolPair& sd, const BoolPair& sp,
                            const BoolPair& so, const UInt64Pair& si, const BoolPair& sl, const BoolPair& st,
                            const BoolPair& ss);

// Event 3 from the fields of `api`. Worker.
void RecordSteamStatus(const sysSteamApi& api);
