// The stop at each stage of the service's life. All stages end alike; the sanitizers watch.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/log.h"
#include "pipe/named_pipe_server.h"
#include "pipe/overlapped_operation.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "service/steam_service.h"
#include "tests/service/held_program.h"
#include "tests/support/limits.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"
#include "tools/launcher_client/frames.h"
#include "tools/launcher_client/pipe_client.h"

namespace {

using launcher::MakeFrame;
using launcher::Outcome;
using std::chrono::milliseconds;
using test_support::Limit;
using test_support::WaitUntil;
using testing::ElementsAreArray;
using testing::StartsWith;
using Lines = std::vector<testing::Matcher<std::string>>;

constexpr milliseconds kBeyondTheTimeOut{20'001};

// A second subsystem, whose handler does what the test wants.
class Gate final : public SubsystemBase {
  public:
    explicit Gate(std::function<void(Gate&)> work) : m_Work(std::move(work)) {}
    void Init() override {}
    void Shutdown() override {}
    const char* GetName() override { return "Gate"; }
    const char* GetId() override { return "GATE"; }
    void HandleMessage(ReceivedMessage&) override { m_Work(*this); }

  private:
    std::function<void(Gate&)> m_Work;
};

struct Stage {
    const char* what;
    std::function<bool()> reach;
    std::optional<Lines> between;  // what is logged during the stop; nothing: whatever it is
};

class SteamServiceStages : public testing::Test {
  protected:
    SteamServiceStages() {
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", folder.Path().c_str());
    }
    ~SteamServiceStages() override { platform_testing::ClearFaults(); }

    bool Connect() { return client.Open("TollmereSteamHelper", Limit()); }
    bool Write(const std::string& frame) { return client.Write(frame, Limit()) == Outcome::Done; }
    bool Served() {
        std::string answer;
        return Connect() && Write(MakeFrame("info_request:1")) && client.Read(answer, Limit()) == Outcome::Done;
    }
    // A handler has begun `work` and said that it got where it should.
    bool InHandler(std::function<void(Gate&)> work) {
        {
            const std::lock_guard lock(OverlappedOperation::CompletionLock());
            g_Subsystems.push_back(std::make_unique<Gate>([this, work = std::move(work)](Gate& gate) {
                ++calls;
                work(gate);
            }));
        }
        return Connect() && Write(MakeFrame("go", "GATE")) && WaitUntil([&] { return reached.load(); });
    }
    bool InLaunch() {
        const std::string game = folder.Path() / "game";
        release = std::async(std::launch::async, [this] {
            AwaitWaitingStop();
            held->LetGo();
        });
        return Connect() && Write(MakeFrame(launcher::LaunchRequest(1, game, folder.Path().string(), ""))) &&
               WaitUntil([&] { return held->IsBeingStarted(); });
    }
    bool Left() {
        if (!Served()) return false;
        log.Lines();
        client.Close();
        return Logged("Scheduling a shutdown in");
    }

    bool Logged(const std::string& text) {
        return WaitUntil([&] {
            FlushLog();
            return test_support::ReadAll(log.File()).find(text) != std::string::npos;
        });
    }
    // The main thread has begun with the stop and waits in it. Asked without the log, whose flush takes a lock that a
    // launch holds.
    void AwaitWaitingStop() {
        EXPECT_TRUE(WaitUntil([&] {
            const std::string status = test_support::ReadAll("/proc/self/stat");
            return stopping && status.find(") S ") != std::string::npos;
        }));
    }

    void StopIn(const Stage& stage) {
        SCOPED_TRACE(stage.what);
        log.ArmFlushTimer();
        const int handles = platform_testing::OpenHandleCount();
        service.emplace();
        ASSERT_TRUE(service->Init());
        ASSERT_TRUE(stage.reach());
        const int callsBefore = calls;
        stopping = true;
        service->Shutdown();
        EXPECT_TRUE(g_Subsystems.empty());
        if (release.valid()) release.get();
        ExpectStopLines(stage.between);
        service.reset();
        ExpectClientAtItsEnd();
        ExpectNothingLeft(handles);
        EXPECT_EQ(calls, callsBefore);
        reached = stopping = false;
    }
    void ExpectStopLines(const std::optional<Lines>& between) {
        std::vector<std::string> lines = log.Lines();
        lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "SteamService :: Shutdown"));
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines.back(), "Destroying pipe...");
        EXPECT_THAT(lines, testing::Each(testing::Not(StartsWith("Failed to unregister"))));
        if (!between) return;
        EXPECT_THAT(std::vector(lines.begin() + 1, lines.end() - 1), ElementsAreArray(*between));
    }
    void ExpectClientAtItsEnd() {
        if (!client.IsOpen()) return;
        client.Write(MakeFrame("go", "GATE"), Limit());
        std::string rest;
        Outcome outcome = Outcome::Done;
        while (outcome == Outcome::Done) outcome = client.Read(rest, Limit());
        EXPECT_EQ(outcome, Outcome::Lost);
        client.Close();
    }
    // Nothing comes of the service any more, however much time goes by, and it holds nothing.
    void ExpectNothingLeft(int handles) {
        platform_testing::AdvanceClock(kBeyondTheTimeOut);
        EXPECT_TRUE(WaitUntil([&] {
            log.ArmFlushTimer();
            return platform_testing::OpenHandleCount() == handles;
        })) << platform_testing::OpenHandleCount()
            << " handles instead of " << handles;
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
    }

    test_support::TempFolder folder;
    test_support::LogCapture log;
    launcher::PipeClient client;
    std::optional<SteamService> service;
    std::optional<HeldProgram> held;
    std::future<void> release;
    std::atomic<int> calls = 0;
    std::atomic<bool> reached = false;
    std::atomic<bool> stopping = false;
};

TEST_F(SteamServiceStages, TheStopIsTheSameInEachOfThem) {
    const Stage stages[] = {
        {"listening", [] { return true; }, Lines{}},
        {"a client comes", [&] { return Connect(); }, std::nullopt},
        {"a read is pending", [&] { return Served(); }, Lines{}},
        {"a write is pending, others are queued, nobody reads",
         [&] {
             return InHandler([&](Gate& gate) {
                 for (int i = 0; i < 200; ++i) gate.SendSubsystemMessage(std::string(2048, 'x'));
                 reached = true;
             });
         },
         Lines{}},
        {"inside a handler that goes on to answer",
         [&] {
             return InHandler([&](Gate& gate) {
                 reached = true;
                 AwaitWaitingStop();
                 EXPECT_TRUE(gate.SendSubsystemMessage("late"));
             });
         },
         Lines{}},
        {"the client leaves", [&] { return Served() && (client.Close(), true); }, std::nullopt},
        {"the client has left", [&] { return Left(); }, Lines{}},
        {"the time-out has come due",
         [&] {
             platform_testing::AdvanceClock(kBeyondTheTimeOut);
             return WaitUntil([&] { return service->m_ReadyToExit.load(); });
         },
         Lines{}},
    };
    for (const Stage& stage : stages) StopIn(stage);
}

TEST_F(SteamServiceStages, TheStopWaitsForALaunch) {
    held.emplace(folder.Path() / "game");
    if (!held->IsHeld()) GTEST_SKIP() << "a file system without leases can't hold a launch";
    StopIn({"inside a launch", [&] { return InLaunch(); }, Lines{StartsWith("Process created successfully.")}});
}

TEST_F(SteamServiceStages, AServiceThatNeverGotItsPipeLeavesNothingRunning) {
    for (const char* const call : {"CreateNamedPipeA", "ConnectNamedPipe"}) {
        SCOPED_TRACE(call);
        log.ArmFlushTimer();
        const int handles = platform_testing::OpenHandleCount();
        platform_testing::FailCall(call, ERROR_PIPE_BUSY);
        service.emplace();
        ASSERT_FALSE(service->Init());
        log.Lines();
        service.reset();
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
        // What else there is goes with the process.
        g_Subsystems.clear();
        NamedPipeServer::Destroy();
        log.Lines();
        ExpectNothingLeft(handles);
    }
}

}  // namespace
