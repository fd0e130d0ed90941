#pragma once

// What the environment tells the stand-in to do. Each call reads it again; a value that makes no sense is recorded
// as an error and counts as the default. README.md describes the variables.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace script {

// What the stand-in gives for handles; none of them is 0, and no two are alike.
inline constexpr std::int32_t kUserHandle = 11;
inline constexpr std::int32_t kPipeHandle = 22;
inline constexpr std::uint32_t kTicketHandle = 4097;

// Whether this call of SteamAPI_Init succeeds.
bool InitSucceeds();

// Whether the thing with this name of STEAM_STAND_IN_NULL is to be refused.
bool IsRefused(std::string_view name);

std::uint64_t SteamId();
std::string PersonaName();
bool IsLoggedOn();
std::string Ticket();                         // the bytes
std::optional<std::uint32_t> TicketLength();  // what to claim instead of the ticket's length

struct Callback {
    unsigned m_Pump = 0;  // counted from 1
    int m_Id = 0;
    std::optional<std::string> m_Payload;  // the bytes; nothing: a null pointer
    bool m_AsCallResult = false;           // by the form with three arguments
};

// In the order of delivery.
std::vector<Callback> Callbacks();

}  // namespace script
