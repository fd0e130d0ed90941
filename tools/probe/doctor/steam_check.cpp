#include "tools/probe/doctor/checks.h"
#include "tools/probe/doctor/processes.h"

Check CheckSteam(bool needsSteam) {
    const std::string name = "steam";
    if (!needsSteam) return Healthy(name, "not needed: the library is the stand-in");
    const std::optional<std::uint32_t> id = SteamProcessId();
    const std::optional<ProcessLook> steam = id ? LookAtProcess(*id) : std::nullopt;
    // An id that Steam has left behind may be another process's by now.
    const bool isSteam = steam && (steam->m_Name == "steam" || steam->m_Name.empty());
    if (!isSteam) return Failing(name, "steam-refuses", "Steam doesn't run for this user");
    if (steam->m_Relation != Relation::Equal) return Failing(name, "steam-refuses", Describe(*steam));
    return Healthy(name, Describe(*steam) + ", with the same rights");
}
