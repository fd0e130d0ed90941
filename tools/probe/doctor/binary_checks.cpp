#include <algorithm>

#include "support/temp_folder.h"
#include "tools/probe/doctor/binaries.h"
#include "tools/probe/doctor/checks.h"

namespace fs = std::filesystem;
using support::ToUtf8;

namespace {

// In the order in which the helper asks for them.
const std::vector<std::string> kExports = {
    "SteamAPI_Init",          "SteamAPI_Shutdown",      "SteamAPI_RegisterCallback", "SteamAPI_UnregisterCallback",
    "SteamAPI_GetHSteamUser", "SteamAPI_GetHSteamPipe", "SteamAPI_RunCallbacks",     "SteamClient"};
// Only the stand-in has it.
const std::string kStandInMark = "SteamStandIn";

// From there on the helper doesn't know its own folder. Counted as Windows does, in units of UTF-16.
constexpr std::size_t kTooLongPath = 260;

std::string Join(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}

}  // namespace

Check CheckProgram(const fs::path& helper) {
    const std::string name = "program";
    std::error_code error;
    if (!fs::is_regular_file(helper, error)) return Failing(name, "helper-missing", ToUtf8(helper));
    const ProgramLook look = LookAtProgram(helper);
    if (!look.m_Problem.empty()) return Failing(name, "helper-not-started", ToUtf8(helper) + ": " + look.m_Problem);
    return Healthy(name, ToUtf8(helper) + (look.m_Version.empty() ? ", without a version" : ", " + look.m_Version));
}

Check CheckLibrary(const fs::path& helper, bool& needsSteam) {
    const std::string name = "library";
    needsSteam = true;
    const fs::path library = helper.parent_path() / "steam_api64.dll";
    if (helper.u16string().size() >= kTooLongPath) {
        return Failing(name, "no-steam-library", "the helper's path has 260 characters or more: " + ToUtf8(helper));
    }
    std::error_code error;
    if (!fs::is_regular_file(library, error)) {
        return Failing(name, "no-steam-library", "there is no " + ToUtf8(library));
    }
    std::vector<std::string> names = kExports;
    names.push_back(kStandInMark);
    LibraryLook look = LookAtLibrary(library, names);
    if (!look.m_Problem.empty()) {
        return Failing(name, "no-steam-library", ToUtf8(library) + ": " + look.m_Problem);
    }
    needsSteam = std::erase(look.m_Missing, kStandInMark) > 0;
    if (!look.m_Missing.empty()) return Failing(name, "wrong-steam-library", "missing: " + Join(look.m_Missing));
    return Healthy(name, ToUtf8(library) + (needsSteam ? "" : ", the stand-in") +
                             "; what interfaces it gives shows when the helper starts");
}
