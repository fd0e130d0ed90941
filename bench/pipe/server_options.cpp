#include "bench/pipe/server_options.h"

#include <stdexcept>
#include <vector>

#include "bench/pipe/pipe_path.h"
#include "tools/surroundings/surroundings.h"

namespace pipe_bench {

ServerOptions ReadServerOptions(int argc, char** argv) {
    const std::vector<std::string> arguments = surroundings::Arguments(argc, argv);
    const bool each = arguments.size() == 6 && arguments.back() == "each";
    if (arguments.size() != 5 && !each) {
        throw std::runtime_error("the arguments are NAME STEAMID PERSONA TICKET [each]");
    }
    return {PipePath(arguments[1]), Service(arguments[2], arguments[3], arguments[4]), !each};
}

}  // namespace pipe_bench
