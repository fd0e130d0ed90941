#include <cstdlib>
#include <stdexcept>

#include "bench/pipe/pipe_path.h"

namespace pipe_bench {

std::string PipePath(const std::string& name) {
    const char* const folder = std::getenv("TOLLMERE_PIPE_DIR");
    if (folder == nullptr) throw std::runtime_error("TOLLMERE_PIPE_DIR isn't set");
    return std::string(folder) + "/" + name;
}

}  // namespace pipe_bench
