// What the end of a process with a full event store costs: the old store read, merged and written again.

#include <stdexcept>

#include "bench/measure.h"
#include "platform/owners.h"
#include "telemetry/event_store.h"
#include "telemetry/event_store_path.h"
#include "telemetry/telemetry_publication.h"

static void Queue(int count) {
    const LockGuard lock(g_TelemetryLock);
    for (int i = 0; i < count; ++i) {
        QueueEvent("STEAM_ACTION",
                   R"("id":3,"sa":480,"sd":true,"sp":true,"so":false,"si":76561197960287930,"sl":true,"st":true)",
                   134'000'000'000'000'000U);
    }
}

template <typename Function>
static Times TimeOf(const Function& function) {
    const Clock::time_point begin = Clock::now();
    const bool done = function();
    const Clock::duration time = Clock::now() - begin;
    if (!done) throw std::runtime_error("the store can't be read and written");
    return {time};
}

// Some events are this run's, and of the old store those stay for which there is room.
static Times TimeOfSave() {
    Queue(3);
    return TimeOf(SaveEvents);
}

// The same bytes out of the same file and into it again.
static bool ReadAndWrite(const WideString& path) {
    char bytes[65536];
    DWORD size = 0, written = 0;
    OwnedFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
    ReadFile(file.Get(), bytes, sizeof bytes, &size, nullptr);
    file.Reset();
    file.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr));
    WriteFile(file.Get(), bytes, size, &written, nullptr);
    return written > 0;
}

static WideString StorePath() {
    const LockGuard lock(g_TelemetryLock);
    WideString path;
    GetEventStorePath(path);
    return path;
}

void MeasureStore(const Texts& arguments) {
    TelemetryHooks hooks;
    SteamHelperTelemetry source;
    PublishTelemetry(hooks, source);
    Queue(source.GetMaxEvents());
    TimeOf(SaveEvents);
    TakeTurns("store", std::stoi(arguments.at(0)),
              {{"helper", TimeOfSave},
               {"floor", [path = StorePath()] { return TimeOf([&] { return ReadAndWrite(path); }); }}});
    SaveEventsAndWithdraw();
}
