#include "clients/cpp/tollmere_launcher_client.h"
#include "support/system.h"

namespace support {

std::string CommandLine(int argc, char** argv) {
    return launcher::CommandLine(Arguments(argc, argv));
}

}  // namespace support
