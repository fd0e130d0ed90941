#pragma once

#include <string>

#include "bench/pipe/service.h"

namespace pipe_bench {

// What a server's command line says: `NAME STEAMID PERSONA TICKET [each]` behind the program's own name.
struct ServerOptions {
    std::string m_Path;  // of the pipe NAME
    Service m_Service;
    bool m_Together;  // all answers to one read go in one write; with `each`, every answer in its own
};

// Throws std::runtime_error if the command line is another. All text is UTF-8.
ServerOptions ReadServerOptions(int argc, char** argv);

}  // namespace pipe_bench
