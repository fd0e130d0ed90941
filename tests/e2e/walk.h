#pragma once

// A whole life of the helper, at one point of which something fails: with two visits, as far as it gets. Whatever that
// costs, the process comes to an end by itself.

#include <fstream>
#include <optional>
#include <string>

#include "support/limits.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

struct Life {
    std::optional<int> exitCode;
    // Whether all that was asked was answered.
    bool visits[2] = {false, false};
    // What the process reports at its end; some ends leave no report.
    int pendingFaults = -1;
    int handles = -1;
    int allocations = -1;
};

class Walk : public HelperFixture {
  protected:
    Walk() {
        variables["SteamLocation"] = std::nullopt;               // so that the parent process is looked for
        arguments = {"-steamAppID=480", "-steamTestTelemetry"};  // so that the environment is changed
        variables["STEAM_STAND_IN_INIT"] = "fail-first";
        variables["ASAN_OPTIONS"] = "exitcode=99";  // not one of the helper's own
        variables["TOLLMERE_TEST_REPORT"] = support::ToUtf8(m_Report);
    }

    // `store` is what earlier lives have left; without one its folder isn't there either.
    Life LiveThrough(const std::optional<std::string>& store) {
        std::filesystem::remove(m_Report);
        std::filesystem::remove_all(EventFile().parent_path().parent_path());
        if (store) {
            std::filesystem::create_directories(EventFile().parent_path());
            std::ofstream(EventFile()) << *store;
        }
        Start();
        Life life;
        for (bool& visit : life.visits) visit = Visit();
        LetPass(std::chrono::seconds{21});
        // Again and again: the first may be the one that fails.
        support::WaitUntil([&] {
            Helper().RequestClose();
            return !Helper().IsRunning();
        });
        life.exitCode = Helper().WaitForExit();
        std::ifstream(m_Report) >> life.pendingFaults >> life.handles >> life.allocations;
        return life;
    }

  private:
    bool Visit() {
        // Without a pipe the helper's time runs out.
        const auto isDecided = [&] {
            if (Launcher().TryOpen(kPipeName)) return true;
            LetPass(std::chrono::milliseconds{20});
            return !Helper().IsRunning();
        };
        if (!support::WaitUntil(isDecided) || !Launcher().IsOpen()) return false;
        bool answered = true;
        for (const std::string& request :
             {std::string("info_request:1"), launcher::LaunchRequest(2, SampleGame(), HomeText(), "one \"two three\""),
              std::string("info_request:3")}) {
            std::string answer;
            // A helper that doesn't notice the request answers none.
            answered = answered &&
                       Launcher().Write(launcher::MakeFrame(request), support::Limit()) == launcher::Outcome::Done &&
                       Launcher().Read(answer, support::Limit() / 10) == launcher::Outcome::Done;
        }
        // The waiting lines are written now.
        LetPass(std::chrono::seconds{11});
        Leave();
        return answered;
    }

    const std::filesystem::path m_Report = Home() / "report";
};

}  // namespace e2e
