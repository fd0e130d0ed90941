// Write the store's text, into a buffer that is there already.

#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <nlohmann/json.hpp>

#include "bench/in_process/sample_store.h"
#include "telemetry/json/json_writer.h"

namespace {

std::size_t WithTollmere(const std::vector<SampleEvent>& events) {
    static std::vector<char> buffer(1 << 22);
    JsonWriter writer;
    writer.m_Buffer = buffer.data();
    writer.m_Capacity = static_cast<std::uint32_t>(buffer.size());
    writer.Begin();
    writer.BeginArray("metrics");
    for (const SampleEvent& event : events) {
        writer.Begin();
        writer.WriteString("name", event.m_Name.c_str());
        writer.WriteString("data", event.m_Data.c_str());
        writer.WriteUInt64("time", event.m_Time);
        writer.End();
    }
    writer.End();
    writer.End();
    return writer.HasFailed() ? 0 : writer.m_Cursor;
}

std::size_t WithRapidjson(const std::vector<SampleEvent>& events) {
    static rapidjson::StringBuffer buffer;
    buffer.Clear();
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto length = [](const std::string& text) { return static_cast<rapidjson::SizeType>(text.size()); };
    writer.StartObject();
    writer.Key("metrics");
    writer.StartArray();
    for (const SampleEvent& event : events) {
        writer.StartObject();
        writer.Key("name");
        writer.String(event.m_Name.data(), length(event.m_Name));
        writer.Key("data");
        writer.String(event.m_Data.data(), length(event.m_Data));
        writer.Key("time");
        writer.Uint64(event.m_Time);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return buffer.GetSize();
}

std::size_t WithNlohmann(const std::vector<SampleEvent>& events) {
    nlohmann::ordered_json metrics = nlohmann::ordered_json::array();
    for (const SampleEvent& event : events) {
        metrics.push_back({{"name", event.m_Name}, {"data", event.m_Data}, {"time", event.m_Time}});
    }
    return nlohmann::ordered_json{{"metrics", std::move(metrics)}}.dump().size();
}

void Write(benchmark::State& state, std::size_t (*write)(const std::vector<SampleEvent>&)) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const std::vector<SampleEvent> events = SampleEvents(count);
    if (write(events) != SampleStore(count).size()) {
        state.SkipWithError("wrote something else");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(events));
    }
}

}  // namespace

BENCHMARK_CAPTURE(Write, tollmere, WithTollmere)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Write, rapidjson, WithRapidjson)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Write, nlohmann, WithNlohmann)->Arg(10)->Arg(10'000);
