#pragma once

#include <string>

#include "bench/pipe/service.h"

namespace pipe_bench {

// Makes the pipe at `path` and serves one client until it leaves. Throws boost::system::system_error.
void ServeWithAsio(const std::string& path, Service& service);

}  // namespace pipe_bench
