#include "tools/probe/failures.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "failures_file.h"

namespace {

std::vector<Failure> ReadFailures() {
    std::vector<Failure> all;
    const nlohmann::json file = nlohmann::json::parse(kFailuresFile);
    for (const nlohmann::json& entry : file.at("failures")) {
        Failure failure{entry.at("code"), entry.at("text"), entry.at("advice"), entry.value("page", ""), {}};
        for (const std::string& text : entry.value("log", std::vector<std::string>())) {
            failure.m_Log.push_back(MakePattern(text, R"(\*)"));
        }
        all.push_back(std::move(failure));
    }
    return all;
}

const std::vector<Failure>& Failures() {
    static const std::vector<Failure> all = ReadFailures();
    return all;
}

bool IsToldBy(const Failure& failure, const std::vector<std::string>& texts) {
    auto place = texts.begin();
    for (const TextPattern& pattern : failure.m_Log) {
        place = std::find_if(place, texts.end(), [&](const std::string& text) { return Matches(text, pattern); });
        if (place == texts.end()) return false;
        ++place;
    }
    return !failure.m_Log.empty();
}

}  // namespace

const Failure& FailureOf(const std::string& code) {
    for (const Failure& failure : Failures()) {
        if (failure.m_Code == code) return failure;
    }
    throw std::logic_error("no failure has the code " + code);
}

const Failure* FailureIn(const std::vector<std::string>& texts) {
    for (const Failure& failure : Failures()) {
        if (IsToldBy(failure, texts)) return &failure;
    }
    return nullptr;
}
