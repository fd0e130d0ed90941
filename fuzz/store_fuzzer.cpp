// Any old store file and any events: after a save the file is well-formed, and holds what was queued.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "fuzz/input.h"
#include "telemetry/event_store.h"
#include "telemetry/event_store_path.h"
#include "telemetry/json/json_validator.h"
#include "telemetry/telemetry.h"

namespace {

// Below the folder that TOLLMERE_LOCAL_APP_DATA names, which is this process's own.
std::string StoreFile() {
    Require(std::getenv("TOLLMERE_LOCAL_APP_DATA") != nullptr, "TOLLMERE_LOCAL_APP_DATA names a folder for the store");
    WideString path;
    Require(GetEventStorePath(path), "the store has a path");
    std::string file = WideToUtf8(path.c_str());
    std::replace(file.begin(), file.end(), '\\', '/');
    return file;
}

std::string ReadFile(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// One byte for each character, as UTF-8.
std::string FromStoreBytes(const std::string& bytes) {
    WideString wide;
    for (const char c : bytes) wide += static_cast<unsigned char>(c);
    return WideToUtf8(wide.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static TelemetryHooks hooks;
    static SteamHelperTelemetry source;
    g_TelemetryHooks = &hooks;
    g_TelemetrySource = &source;
    static const std::string file = StoreFile();
    source.m_Events.clear();

    Input input(data, size);
    const std::uint32_t queued = input.Below(12);
    for (std::uint32_t i = 0; i < queued; ++i) {
        const std::string name = input.Bytes(input.Below(40));
        const std::string text = input.Bytes(input.Below(1100));
        QueueEvent(name.c_str(), text.c_str(), input.Below(0xFFFFFFFF));
    }
    std::ofstream(file, std::ios::binary) << input.Rest();
    Require(SaveEvents(), "the store can be written");

    const std::string saved = FromStoreBytes(ReadFile(file));
    Require(ValidateDocument(saved.data(), saved.size()), "a saved store is well-formed");
    Require(LoadEvents(), "a saved store can be loaded");
    Require(source.m_Events.size() >= std::min<std::size_t>(queued, 10), "what was queued comes back");
    return 0;
}
