// Bytes from the pipe, in reads of any size, through the router, the field reader and the subsystem.

#include <cstring>
#include <memory>

#include "fuzz/input.h"
#include "pipe/frame_router.h"
#include "platform/posix/testing/faults.h"
#include "service/steam_subsystem.h"

namespace {

// As large as what was read and one byte, so that a look beyond it is noticed. The server puts the NUL there.
void Read(const std::string& bytes) {
    const auto buffer = std::make_unique<unsigned char[]>(bytes.size() + 1);
    std::memcpy(buffer.get(), bytes.data(), bytes.size());
    buffer[bytes.size()] = '\0';
    RouteFrames(buffer.get(), static_cast<unsigned>(bytes.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static sysSteamApi steam;
    if (g_Subsystems.empty()) g_Subsystems.push_back(std::make_unique<SteamSubsystem>(&steam));
    // Whatever the bytes ask for, no program is started. The shortest launch is longer than 16 bytes.
    platform_testing::ClearFaults();
    for (std::size_t launch = 0; launch <= size / 16; ++launch) platform_testing::FailCall("CreateProcessW", 5);

    Input input(data, size);
    const std::uint32_t largest = 1 + input.Below(65536);
    while (!input.IsEmpty()) Read(input.Bytes(1 + input.Below(largest)));
    return 0;
}
