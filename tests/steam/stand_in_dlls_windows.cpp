#include "tests/steam/stand_in_dlls.h"

std::vector<StandInDll> StandInDlls() {
    return {OwnStandIn(),
            {"msvc", "\\stand_in_variants\\steam_api64_msvc.dll", 33, 44, 76561197960265730, "Built: elsewhere",
             std::string("MSVC\x00\xFF\x80\x7F", 8), 8194}};
}
