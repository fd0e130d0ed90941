#pragma once

// Launchers that use a client of clients/: for each client a driver, a program that does the steps of a script and
// reports on each. driver.js says how both look.

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/e2e/helper_fixture.h"

namespace clients {

using nlohmann::json;
using Steps = json;
using Report = std::vector<json>;

class ClientFixture : public e2e::HelperFixture {
  protected:
    virtual std::string Driver() const = 0;
    void SetUp() override;

    // Those of `start`; to its environment come HelperFixture's variables.
    json options = {{"helper", HomeText() + "/" + e2e::ProgramFile("tollmere_steam_helper")},
                    {"appId", 480},
                    {"directory", HomeText()}};
    // `stop` kills no helper, so that the log is whole.
    void EndInOrder() { options["probe"] = support::ToUtf8(e2e::BinFolder() / e2e::ProgramFile("probe")); }
    // What stands in front of the driver's command line.
    std::vector<std::string> wrapper;

    // One launcher.
    struct Driven {
        std::unique_ptr<support::ChildProcess> m_Process;
        std::filesystem::path m_Report;
        std::size_t m_Steps = 0;

        Report Lines() const;  // one for each step that has ended
    };
    Driven Drive(const Steps& steps);
    // Waits for its end. `meanwhile` is called again and again.
    static Report Finish(
        const Driven& driven, const std::function<void()>& meanwhile = [] {});
    Report Run(const Steps& steps) { return Finish(Drive(steps)); }

    // In the helper's surroundings.
    std::unique_ptr<support::ChildProcess> StartProgram(const std::vector<std::string>& line,
                                                        support::Environment changes) const;
    // What it prints gets into the file.
    std::unique_ptr<support::ChildProcess> StartNode(const std::vector<std::string>& line,
                                                     const std::filesystem::path& output = {}) const;
    static std::string InClients(const char* file) { return support::ToUtf8(e2e::BinFolder() / "clients" / file); }

  private:
    int m_Drives = 0;
};

// A test of every client.
class Clients : public ClientFixture, public testing::WithParamInterface<std::string> {
  protected:
    std::string Driver() const override { return GetParam(); }
};

// A test of the one in Node.js alone.
class NodeClient : public ClientFixture {
  protected:
    std::string Driver() const override { return "Node"; }
};

inline const auto kDrivers = testing::Values(std::string("Cpp"), std::string("Node"));

}  // namespace clients
