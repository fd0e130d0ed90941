#include "tests/steam/stand_in_dlls.h"

std::vector<StandInDll> StandInDlls() {
    return {OwnStandIn()};
}
