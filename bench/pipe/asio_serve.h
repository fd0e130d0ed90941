#pragma once

#include "bench/pipe/server_options.h"

namespace pipe_bench {

// Makes the pipe and serves one client until it leaves. Throws boost::system::system_error.
void ServeWithAsio(ServerOptions& options);

}  // namespace pipe_bench
