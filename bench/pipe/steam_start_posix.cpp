#include <dlfcn.h>

#include <stdexcept>

#include "bench/pipe/steam_start.h"

namespace pipe_bench {

void StartSteam(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    const auto init = reinterpret_cast<bool (*)()>(dlsym(library, "SteamAPI_Init"));
    if (init == nullptr || !init()) throw std::runtime_error("Steam doesn't start: " + path);
}

}  // namespace pipe_bench
