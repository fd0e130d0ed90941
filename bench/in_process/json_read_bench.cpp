// Validate a store and walk it: each takes name, data and time of every event, decoded.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <simdjson.h>

#include <charconv>
#include <cstring>
#include <nlohmann/json.hpp>

#include "bench/in_process/sample_store.h"
#include "telemetry/json/json_string.h"
#include "telemetry/json/json_token.h"
#include "telemetry/json/json_validator.h"

namespace {

// What each makes of the document, to be compared: bytes of text, and the sum of the times.
struct Summary {
    std::size_t m_Events = 0;
    std::size_t m_Bytes = 0;
    std::uint64_t m_Times = 0;

    void Add(std::size_t name, std::size_t data, std::uint64_t time) {
        ++m_Events;
        m_Bytes += name + data;
        m_Times += time;
    }
    bool operator==(const Summary&) const = default;
};

std::size_t TextLength(const JsonToken& entry, const char* name) {
    JsonToken value;
    char text[1024];
    std::size_t length = 0;
    if (FindMember(entry, name, value)) GetString(value, text, sizeof text, &length);
    benchmark::DoNotOptimize(text);
    return length;
}

Summary WithTollmere(const std::string& store) {
    Summary summary;
    JsonToken document, metrics, entry, time;
    if (!ValidateDocument(store.data(), store.size()) ||
        !ParseToken(document, store.data(), static_cast<std::uint32_t>(store.size())) ||
        !FindMember(document, "metrics", metrics)) {
        return summary;
    }
    for (bool more = FirstChild(metrics, entry); more; more = NextToken(entry, entry)) {
        std::uint64_t number = 0;
        if (FindMember(entry, "time", time)) {
            const char* const digits = time.m_Text + time.m_ValueOffset;
            std::from_chars(digits, digits + time.m_ValueLength, number);
        }
        summary.Add(TextLength(entry, "name"), TextLength(entry, "data"), number);
    }
    return summary;
}

// Texts are told apart by the member they belong to, as a reader of this file would do it.
struct RapidHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RapidHandler> {
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        m_Key = length > 0 ? text[0] : '\0';
        return true;
    }
    bool String(const char*, rapidjson::SizeType length, bool) {
        (m_Key == 'n' ? m_Name : m_Data) = length;
        return true;
    }
    bool Uint64(std::uint64_t number) {
        m_Time = number;
        return true;
    }
    bool EndObject(rapidjson::SizeType members) {
        if (members == 3) m_Summary.Add(m_Name, m_Data, m_Time);
        return true;
    }
    Summary m_Summary;
    char m_Key = '\0';
    std::size_t m_Name = 0;
    std::size_t m_Data = 0;
    std::uint64_t m_Time = 0;
};

Summary WithRapidSax(const std::string& store) {
    rapidjson::MemoryStream stream(store.data(), store.size());
    RapidHandler handler;
    rapidjson::Reader().Parse(stream, handler);
    return handler.m_Summary;
}

// It writes into the text, so it needs a copy of its own each time.
Summary WithRapidInPlace(const std::string& store) {
    std::string copy = store;
    rapidjson::Document document;
    document.ParseInsitu(copy.data());
    Summary summary;
    for (const auto& event : document["metrics"].GetArray()) {
        summary.Add(event["name"].GetStringLength(), event["data"].GetStringLength(), event["time"].GetUint64());
    }
    return summary;
}

// It reads beyond the end, so the store has room there.
Summary WithSimdjson(const std::string& store) {
    static simdjson::ondemand::parser parser;
    simdjson::ondemand::document document = parser.iterate(store.data(), store.size(), store.capacity());
    Summary summary;
    for (simdjson::ondemand::object event : document["metrics"]) {
        const std::string_view name = event["name"];
        const std::string_view data = event["data"];
        summary.Add(name.size(), data.size(), std::uint64_t{event["time"]});
    }
    return summary;
}

Summary WithNlohmann(const std::string& store) {
    const nlohmann::json document = nlohmann::json::parse(store);
    Summary summary;
    for (const auto& event : document["metrics"]) {
        summary.Add(event["name"].get_ref<const std::string&>().size(),
                    event["data"].get_ref<const std::string&>().size(), event["time"].get<std::uint64_t>());
    }
    return summary;
}

void Read(benchmark::State& state, Summary (*read)(const std::string&)) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::string store = SampleStore(count);
    store.reserve(store.size() + simdjson::SIMDJSON_PADDING);
    if (const Summary summary = read(store); summary.m_Events != count || summary != WithNlohmann(store)) {
        state.SkipWithError("read something else");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(read(store));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(store.size()));
}

}  // namespace

BENCHMARK_CAPTURE(Read, tollmere, WithTollmere)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Read, rapidjson_sax, WithRapidSax)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Read, rapidjson_in_place, WithRapidInPlace)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Read, simdjson, WithSimdjson)->Arg(10)->Arg(10'000);
BENCHMARK_CAPTURE(Read, nlohmann, WithNlohmann)->Arg(10)->Arg(10'000);
