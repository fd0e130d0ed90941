#pragma once

#include <string>

#include "bench/pipe/service.h"

namespace pipe_bench {

// What a server's command line says: `NAME STEAMID PERSONA TICKET` behind the program's own name.
struct ServerOptions {
    std::string m_Path;  // of the pipe NAME
    Service m_Service;
};

// Throws std::runtime_error if the command line is another. All text is UTF-8.
ServerOptions ReadServerOptions(int argc, char** argv);

}  // namespace pipe_bench
