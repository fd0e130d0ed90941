#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A stand-in for the Steam client, and what it answers when nothing tells it otherwise.
struct StandInDll {
    std::string m_Name;
    std::string m_Path;  // from the folder of the test program, with `\` between names
    std::int32_t m_User;
    std::int32_t m_Pipe;
    std::uint64_t m_SteamId;
    std::string m_PersonaName;
    std::string m_Ticket;  // the bytes
    std::uint32_t m_TicketHandle;
};

// Those that this build has.
std::vector<StandInDll> StandInDlls();

// The one that is compiled like the program.
StandInDll OwnStandIn();
