#include <dlfcn.h>

#include <stdexcept>

#include "bench/pipe/steam_start.h"

namespace pipe_bench {

static void* Load(const std::string& name) {
    void* const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    return library;
}

void StartSteam(const std::string& path) {
    const auto init = reinterpret_cast<bool (*)()>(dlsym(Load(path), "SteamAPI_Init"));
    if (init == nullptr || !init()) throw std::runtime_error("Steam doesn't start: " + path);
}

void LoadSystemLibrary(const std::string& name) {
    Load(name);
}

void CreateMessageWindow() {
    throw std::runtime_error("there are no windows here");
}

}  // namespace pipe_bench
