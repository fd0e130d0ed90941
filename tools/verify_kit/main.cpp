// Runs every test of the programs beside it, each in a process of its own, on a machine that has nothing else of the
// project: verify_kit [PART...]. With arguments only the tests whose full name has one of these parts.
//
// Prints what fails or is skipped, and how many passed, failed and were skipped, and leaves results.json in the folder
// above its own. Exit status: 0 if all passed, 1 if one failed or none ran.

#include <tollmere_version.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/temp_folder.h"

// The headers don't declare it. Unlike GetVersionEx it tells every program the same.
extern "C" LONG NTAPI RtlGetVersion(RTL_OSVERSIONINFOW* version);

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using support::ReadAll;

fs::path BinFolder() {
    wchar_t path[4096];
    GetModuleFileNameW(nullptr, path, 4096);
    return fs::path(path).parent_path();
}

struct TestCase {
    fs::path program;
    std::string suiteAndName;
    std::string fullName;
};

// A test has as many of the usual limits as the slowest one needs.
constexpr int kLimitsOfOneTest = 10;

// Runs a test program in `folder` until it ends. What it has reported there, as GoogleTest's JSON; null without one.
json RunProgram(const fs::path& program, const std::string& option, const fs::path& folder, std::optional<int>& code) {
    const fs::path report = folder / "report.json";
    fs::remove(report);
    // The path is relative: the program would read one of other letters than its code page's wrongly.
    support::ChildProcess process({program, {option, "--gtest_output=json:report.json"}, {}, folder});
    for (int i = 0; i < kLimitsOfOneTest && !code; ++i) code = process.WaitForExit();
    return json::parse(ReadAll(report), nullptr, false);
}

std::vector<TestCase> ListTests(const fs::path& program, const fs::path& folder) {
    std::optional<int> code;
    std::vector<TestCase> tests;
    const json report = RunProgram(program, "--gtest_list_tests", folder, code);
    if (report.is_discarded()) return {{program, "*", program.stem().string() + ".(can't tell its tests)"}};
    for (const json& suite : report.at("testsuites")) {
        for (const json& test : suite.at("testsuite")) {
            const std::string name = std::string(suite.at("name")) + "." + std::string(test.at("name"));
            tests.push_back({program, name, program.stem().string() + "." + name});
        }
    }
    return tests;
}

// Empty if the test has passed.
std::string WhyItFailed(const json& report, const std::optional<int>& code) {
    if (!code) return "It hasn't ended in time.";
    const std::string ended = "It has ended with code " + std::to_string(*code) + ".\n";
    if (report.is_discarded()) return ended + "It has left no report.";
    if (*code == 0) return report.at("tests") == 1 ? "" : "It isn't one test.";
    std::string text = ended;
    for (const json& suite : report.at("testsuites")) {
        for (const json& test : suite.at("testsuite")) {
            for (const json& failure : test.value("failures", json::array())) {
                text += std::string(failure.at("failure")) + "\n";
            }
        }
    }
    return text;
}

json RunTest(const TestCase& test, const fs::path& folder) {
    const auto begin = std::chrono::steady_clock::now();
    std::optional<int> code;
    const json report = RunProgram(test.program, "--gtest_filter=" + test.suiteAndName, folder, code);
    const auto took = std::chrono::steady_clock::now() - begin;
    json result = {{"name", test.fullName},
                   {"result", "passed"},
                   {"milliseconds", std::chrono::duration_cast<std::chrono::milliseconds>(took).count()}};
    const std::string why = WhyItFailed(report, code);
    if (!why.empty()) {
        result["result"] = "failed";
        result["failure"] = why;
        std::printf("FAILED %s\n%s\n", test.fullName.c_str(), why.c_str());
    } else if (report.at("testsuites").at(0).at("testsuite").at(0).at("result") == "SKIPPED") {
        result["result"] = "skipped";
        std::printf("SKIPPED %s\n", test.fullName.c_str());
    }
    return result;
}

std::string WindowsVersion() {
    RTL_OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    RtlGetVersion(&version);
    return std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
           std::to_string(version.dwBuildNumber);
}

std::vector<TestCase> ChosenTests(const std::vector<std::string>& parts, const fs::path& folder) {
    std::vector<fs::path> programs;
    for (const fs::directory_entry& entry : fs::directory_iterator(BinFolder())) {
        if (entry.path().filename().string().ends_with("_test.exe")) programs.push_back(entry.path());
    }
    std::sort(programs.begin(), programs.end());
    std::vector<TestCase> chosen;
    for (const fs::path& program : programs) {
        std::ranges::copy_if(ListTests(program, folder), std::back_inserter(chosen), [&](const TestCase& test) {
            const auto isIn = [&](const std::string& part) { return test.fullName.find(part) != std::string::npos; };
            return parts.empty() || std::any_of(parts.begin(), parts.end(), isIn);
        });
    }
    return chosen;
}

}  // namespace

int main(int argc, char** argv) {
    const support::TempFolder folder;
    const std::vector<TestCase> tests = ChosenTests({argv + 1, argv + argc}, folder.Path());
    std::printf("Windows %s, %zu tests\n", WindowsVersion().c_str(), tests.size());
    json results = json::array();
    for (const TestCase& test : tests) {
        std::printf("%3zu/%zu %s\n", results.size() + 1, tests.size(), test.fullName.c_str());
        std::fflush(stdout);
        results.push_back(RunTest(test, folder.Path()));
    }
    const auto count = [&](const char* outcome) {
        return std::count_if(results.begin(), results.end(),
                             [&](const json& result) { return result.at("result") == outcome; });
    };
    const std::ptrdiff_t passed = count("passed"), failed = count("failed"), skipped = count("skipped");
    const json all = {{"version", TOLLMERE_VERSION},
                      {"windows", WindowsVersion()},
                      {"passed", passed},
                      {"failed", failed},
                      {"skipped", skipped},
                      {"tests", results}};
    std::ofstream(BinFolder().parent_path() / "results.json")
        << all.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
    std::printf("%td passed, %td failed, %td skipped\n", passed, failed, skipped);
    return passed > 0 && failed == 0 ? 0 : 1;
}
