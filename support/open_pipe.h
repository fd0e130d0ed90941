#pragma once

#include <string>

#include "clients/cpp/tollmere_launcher_client.h"

namespace support {

// Tries at once to open the pipe, and again whenever it may have become free, until it works or `limit` has passed.
bool OpenPipe(launcher::PipeClient& pipe, const std::string& name, launcher::Milliseconds limit);

}  // namespace support
