#include "tests/clients/clients_fixture.h"

#include <fstream>
#include <sstream>

#include "support/limits.h"
#include "support/system.h"

namespace clients {

using support::ToUtf8;

static std::string NodeProgram() {
    return support::Variable("TOLLMERE_NODE").value_or(TOLLMERE_NODE);
}

void ClientFixture::SetUp() {
    if (Driver() == "Node" && NodeProgram().empty()) GTEST_SKIP() << "TOLLMERE_NODE names no Node.js";
}

std::unique_ptr<support::ChildProcess> ClientFixture::StartNode(const std::vector<std::string>& line,
                                                                const std::filesystem::path& output) const {
    std::vector<std::string> whole = {NodeProgram()};
    whole.insert(whole.end(), line.begin(), line.end());
    support::Environment changes = variables;
    changes["NODE_SKIP_PLATFORM_CHECK"] = "1";  // else it refuses what calls itself an old Windows
    changes["TOLLMERE_TEST_OUTPUT"] = ToUtf8(output);
    return StartProgram(whole, changes);
}

std::unique_ptr<support::ChildProcess> ClientFixture::StartProgram(const std::vector<std::string>& line,
                                                                   support::Environment changes) const {
    std::vector<std::string> whole = wrapper;
    whole.insert(whole.end(), line.begin(), line.end());
    const std::filesystem::path program = support::FromUtf8(whole.front());
    whole.erase(whole.begin());
    return std::make_unique<support::ChildProcess>(support::ChildProcess::Start{program, whole, changes, Home()});
}

ClientFixture::Driven ClientFixture::Drive(const Steps& steps) {
    const std::string number = std::to_string(++m_Drives);
    const std::filesystem::path script = Home() / ("script" + number);
    const std::filesystem::path report = Home() / ("report" + number);
    std::ofstream(script) << json{{"options", options}, {"report", ToUtf8(report)}, {"steps", steps}};
    const bool isNode = Driver() == "Node";
    const std::string program = ToUtf8(e2e::BinFolder() / e2e::ProgramFile("clients_driver"));
    return {isNode ? StartNode({InClients("driver.js"), InClients("node/index.js"), ToUtf8(script)})
                   : StartProgram({program, ToUtf8(script)}, variables),
            report, steps.size()};
}

Report ClientFixture::Driven::Lines() const {
    Report lines;
    std::istringstream text(support::ReadAll(m_Report));
    // The last one may be on its way.
    for (std::string line; std::getline(text, line) && !text.eof();) lines.push_back(json::parse(line));
    return lines;
}

Report ClientFixture::Finish(const Driven& driven, const std::function<void()>& meanwhile) {
    const auto isRunning = [&] { return driven.m_Process->IsRunning(); };
    // Twice the limit for one step: more than any has to take.
    for (int late = 0; late < 2 && isRunning(); ++late) {
        const std::size_t before = driven.Lines().size();
        const bool goesOn = support::WaitUntil([&] {
            meanwhile();
            return !isRunning() || driven.Lines().size() > before;
        });
        if (goesOn) late = -1;
    }
    const Report lines = driven.Lines();
    EXPECT_EQ(lines.size(), driven.m_Steps) << "a call hangs";
    EXPECT_TRUE(!isRunning() && driven.m_Process->WaitForExit() == 0);
    return lines;
}

}  // namespace clients
