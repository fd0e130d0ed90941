#include "tests/steam/stand_in_dlls.h"

StandInDll OwnStandIn() {
    const unsigned char ticket[] = {0x14, 0, 0, 0, 0xDE, 0xAD, 0xBE, 0xEF, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    return {"own", "\\steam_api64.dll", 11, 22, 76561197960287930, "Tollmere Player", {ticket, ticket + sizeof ticket},
            4097};
}
