#include "bench/pipe/pipe_path.h"

namespace pipe_bench {

std::string PipePath(const std::string& name) {
    return "\\\\.\\pipe\\" + name;
}

}  // namespace pipe_bench
