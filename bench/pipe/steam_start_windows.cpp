#include <windows.h>

#include <stdexcept>

#include "bench/pipe/steam_start.h"

namespace pipe_bench {

void StartSteam(const std::string& path) {
    const HMODULE library = LoadLibraryA(path.c_str());
    if (library == nullptr) throw std::runtime_error("can't be loaded: " + path);
    // By way of a pointer to void: the compiler warns of a direct cast between types of functions.
    void* const address = reinterpret_cast<void*>(GetProcAddress(library, "SteamAPI_Init"));
    const auto init = reinterpret_cast<bool (*)()>(address);
    if (init == nullptr || !init()) throw std::runtime_error("Steam doesn't start: " + path);
}

}  // namespace pipe_bench
