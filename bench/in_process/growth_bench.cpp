// How cost grows with what waits: frames in the queue, lines in the log, bytes in the store's file.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "bench/in_process/sample_store.h"
#include "diagnostics/log.h"
#include "diagnostics/text.h"
#include "pipe/named_pipe_server.h"
#include "telemetry/event_store.h"
#include "telemetry/event_store_path.h"
#include "telemetry/telemetry_publication.h"
#include "telemetry/text_file.h"
#include "tools/launcher_client/pipe_client.h"

namespace {

constexpr char kPipeName[] = "tollmere-bench-queue";
constexpr std::chrono::seconds kLimit{30};
constexpr std::uint32_t kFrameSize = 2048;

OutgoingFrame MakeFrame() {
    OutgoingFrame frame;
    frame.m_Size = kFrameSize;
    frame.m_Data = std::make_unique<unsigned char[]>(kFrameSize);
    return frame;
}

void TakeDown() {
    NamedPipeServer::StopDeliveries();
    NamedPipeServer::Destroy();
}

// Frames to a client that reads none of them, and then all.
void FramesQueued(benchmark::State& state) {
    const auto frames = state.range(0);
    std::atomic<bool> connected = false;
    PipeCallbacks callbacks;
    callbacks.OnConnected = [&] { connected = true; };
    launcher::PipeClient client;
    if (!NamedPipeServer::Create(std::string("\\\\.\\pipe\\") + kPipeName, &callbacks) ||
        !client.Open(kPipeName, kLimit)) {
        TakeDown();
        state.SkipWithError("no connection");
        return;
    }
    while (!connected) std::this_thread::yield();
    for (auto _ : state) {
        for (std::int64_t i = 0; i < frames; ++i) {
            OutgoingFrame frame = MakeFrame();
            NamedPipeServer::Send(frame);
        }
        std::size_t received = 0;
        std::string bytes;
        while (received < static_cast<std::size_t>(frames) * kFrameSize) {
            bytes.clear();
            if (client.Read(bytes, kLimit) != launcher::Outcome::Done) {
                state.SkipWithError("the frames didn't all arrive");
                break;
            }
            received += bytes.size();
        }
    }
    client.Close();
    TakeDown();
    state.SetComplexityN(frames);
}

void LogLinesWaiting(benchmark::State& state) {
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) Log("Pipe connected.");
        FlushLog();
    }
    state.SetComplexityN(state.range(0));
}

// Reads, checks and merges an old store of so many bytes and writes the new one.
void StoreSaved(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const std::size_t perEvent = SampleStore(1000).size() / 1000;
    const WideString old = Utf8ToWide(SampleStore(size / perEvent + 1).c_str());
    const TelemetryPublication publication;
    WideString path;
    GetEventStorePath(path);
    for (auto _ : state) {
        state.PauseTiming();
        WriteTextFile(path, old);
        state.ResumeTiming();
        if (!SaveEvents()) state.SkipWithError("not saved");
    }
    state.SetComplexityN(state.range(0));
}

}  // namespace

BENCHMARK(FramesQueued)->RangeMultiplier(10)->Range(1, 100'000)->UseRealTime()->Complexity();
BENCHMARK(LogLinesWaiting)->RangeMultiplier(10)->Range(1, 100'000)->UseRealTime()->Complexity();
BENCHMARK(StoreSaved)->RangeMultiplier(10)->Range(1'000, 10'000'000)->UseRealTime()->Complexity();
