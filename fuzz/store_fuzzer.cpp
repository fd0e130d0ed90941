// Any old store file and any events: after a save the file is well-formed, and holds what was queued.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

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

// What the store can hold of a field: a control character without a letter becomes a blank, and what isn't one byte in
// Latin-1 a question mark.
std::string Storable(std::string field) {
    for (char& c : field) {
        const bool isControl = (c >= 0 && c < ' ') || c == 0x7F;
        if (isControl && std::string_view("\b\f\n\r\t").find(c) == std::string_view::npos) c = ' ';
    }
    WideString latin;
    for (const WCHAR c : Utf8ToWide(field.c_str())) {
        const bool isSecondOfPair = c >= 0xDC00 && c <= 0xDFFF;
        if (!isSecondOfPair) latin += c <= 0xFF ? c : WCHAR{'?'};
    }
    return WideToUtf8(latin.c_str());
}

bool ComesBackAs(const TelemetryEvent& queued, const TelemetryEvent& loaded) {
    return loaded.name == Storable(queued.name) && loaded.data == Storable(queued.data) && loaded.time == queued.time;
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
    const std::vector<TelemetryEvent> before(source.m_Events.begin(), source.m_Events.end());
    std::ofstream(file, std::ios::binary) << input.Rest();
    Require(SaveEvents(), "the store can be written");

    const std::string saved = FromStoreBytes(ReadFile(file));
    Require(ValidateDocument(saved.data(), saved.size()), "a saved store is well-formed");
    Require(LoadEvents(), "a saved store can be loaded");
    const auto& after = source.m_Events;
    Require(after.size() >= before.size() && std::equal(before.begin(), before.end(), after.begin(), ComesBackAs),
            "what was queued comes back, in front of what was in the file");
    return 0;
}
