#include <windows.h>

#include "support/system.h"
#include "support/temp_folder.h"

namespace support {

std::string CommandLine(int, char**) {
    return ToUtf8(std::filesystem::path(GetCommandLineW()));
}

}  // namespace support
