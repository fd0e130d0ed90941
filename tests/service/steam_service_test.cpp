// The stop, wherever the service is, and under load. It always goes alike; the sanitizers watch.

#include "service/steam_service.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "clients/cpp/tollmere_launcher_client.h"
#include "host/timed_shutdown.h"
#include "pipe/named_pipe_server.h"
#include "pipe/subsystem_base.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "support/limits.h"
#include "support/open_pipe.h"
#include "support/temp_folder.h"
#include "tests/support/log_capture.h"

namespace {

using launcher::MakeFrame;
using launcher::Outcome;
using platform_testing::OpenHandleCount;
using std::chrono::milliseconds;
using support::Limit;
using support::WaitUntil;

constexpr char kPipe[] = "TollmereSteamHelper";
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

class SteamServiceTest : public testing::Test {
  protected:
    SteamServiceTest() {
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", m_Pipes.Path().c_str());
        log.ArmFlushTimer();
        m_Handles = OpenHandleCount();
    }
    ~SteamServiceTest() override { SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", nullptr); }

    bool Write(const std::string& frame) { return client.Write(frame, Limit()) == Outcome::Done; }
    bool Served() {
        std::string answer;
        return support::OpenPipe(client, kPipe, Limit()) && Write(MakeFrame("info_request:1")) &&
               client.Read(answer, Limit()) == Outcome::Done;
    }

    // The service is stopped when it has got where `reach` leads.
    void StopWhen(const std::function<bool()>& reach) {
        service.emplace();
        ASSERT_TRUE(service->Init());
        ASSERT_TRUE(reach());
        const int before = calls;
        log.Lines();
        isStopping = true;
        service->Shutdown();
        EXPECT_TRUE(g_Subsystems.empty());
        EXPECT_THAT(log.Lines(), testing::ElementsAre("SteamService :: Shutdown", "Destroying pipe..."));
        service.reset();
        ExpectNothingLeft();
        if (!client.IsOpen()) return;
        // What the launcher now sends reaches nobody.
        client.Write(MakeFrame("go", "GATE"), Limit());
        std::string rest;
        Outcome outcome = Outcome::Done;
        while (outcome == Outcome::Done) outcome = client.Read(rest, Limit());
        EXPECT_EQ(outcome, Outcome::Lost);
        EXPECT_EQ(calls, before);
    }

    // Nothing comes of the service any more, however much time goes by, and it holds nothing.
    void ExpectNothingLeft() {
        platform_testing::AdvanceClock(kBeyondTheTimeOut);
        const auto isAllClosed = [this] {
            log.ArmFlushTimer();
            return OpenHandleCount() == m_Handles;
        };
        EXPECT_TRUE(WaitUntil(isAllClosed)) << OpenHandleCount() << " instead of " << m_Handles;
        EXPECT_THAT(log.Lines(), testing::IsEmpty());
    }

    test_support::LogCapture log;
    launcher::PipeClient client;
    std::optional<SteamService> service;
    std::atomic<int> calls = 0;  // of the gate's handler
    std::atomic<bool> isStopping = false;

  private:
    support::TempFolder m_Pipes;
    int m_Handles = 0;
};

TEST_F(SteamServiceTest, StopsWhileItListens) {
    StopWhen([] { return true; });
}
TEST_F(SteamServiceTest, StopsWhileItReads) {
    StopWhen([this] { return Served(); });
}
TEST_F(SteamServiceTest, StopsWhenItsTimeHasRunOut) {
    StopWhen([this] {
        if (!Served()) return false;
        client.Close();
        return WaitUntil([this] {
            platform_testing::AdvanceClock(kBeyondTheTimeOut);
            return service->m_ReadyToExit.load();
        });
    });
}

// A completion may schedule the time-out, so none runs any more when that one is taken back.
TEST_F(SteamServiceTest, StopsDeliveriesBeforeTheTimeOut) {
    service.emplace();
    ASSERT_TRUE(service->Init() && Served());
    ScheduleTimedShutdown(&*service);
    bool sent = true;
    platform_testing::RunBefore("UnregisterWaitEx", [&] { sent = g_Subsystems[0]->SendSubsystemMessage("late"); });
    service->Shutdown();
    EXPECT_FALSE(sent);
}

// A handler has more to send than anybody reads, and goes on to answer while the stop waits for it.
TEST_F(SteamServiceTest, StopsWhileItAnswers) {
    g_Subsystems.push_back(std::make_unique<Gate>([this](Gate& gate) {
        ++calls;
        for (int i = 0; i < 200; ++i) gate.SendSubsystemMessage(std::string(2048, 'x'));
        EXPECT_TRUE(WaitUntil([this] {
            const std::string status = support::ReadAll("/proc/self/stat");  // of the main thread
            return isStopping && status.find(") S ") != std::string::npos;
        }));
        EXPECT_TRUE(gate.SendSubsystemMessage("late"));
    }));
    StopWhen([this] { return Served() && Write(MakeFrame("go", "GATE")) && WaitUntil([this] { return calls > 0; }); });
}

// The 20 seconds run out while the service is being taken down, or has just been.
TEST_F(SteamServiceTest, ATimeOutThatComesDueFindsNothingToTouch) {
    for (int i = 0; i < 60; ++i) {
        const char* const faults[] = {nullptr, "CreateNamedPipeA", "ConnectNamedPipe"};
        const char* const fault = faults[i % 3];
        if (fault != nullptr) platform_testing::FailCall(fault, ERROR_PIPE_BUSY);
        service.emplace();
        ASSERT_EQ(service->Init(), fault == nullptr);
        std::thread clock([] { platform_testing::AdvanceClock(kBeyondTheTimeOut); });
        if (fault == nullptr) service->Shutdown();
        service.reset();
        clock.join();
        // What else a failed start has left goes with the process.
        g_Subsystems.clear();
        NamedPipeServer::Destroy();
    }
    log.Lines();
    ExpectNothingLeft();
}

// A launcher connects, sends a few frames, reads or not, and leaves; over and over, without a pause.
TEST_F(SteamServiceTest, StopsAThousandTimesUnderLoad) {
    std::atomic<bool> isOver = false;
    std::atomic<int> connections = 0;
    int answers = 0;
    std::thread visits([&] {
        const std::string requests =
            MakeFrame("info_request:1") + MakeFrame("launch_request:2") + MakeFrame("info_request:3");
        for (int round = 0; !isOver; ++round) {
            launcher::PipeClient visitor;
            std::this_thread::yield();
            if (!visitor.TryOpen(kPipe)) continue;
            ++connections;
            for (int i = 0; i < round % 8; ++i) visitor.Write(requests, milliseconds(100));
            std::string answer;
            if (round % 3 == 0 && visitor.Read(answer, milliseconds(20)) == Outcome::Done) ++answers;
        }
    });
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        service.emplace();
        EXPECT_TRUE(service->Init());
        const int before = connections;
        // Every other time the launcher is there; else it may be anywhere.
        EXPECT_TRUE(i % 2 == 1 || WaitUntil([&] { return connections > before; }));
        service->Tick();
        service->Shutdown();
        EXPECT_TRUE(g_Subsystems.empty());
    }
    isOver = true;
    visits.join();
    EXPECT_GT(answers, 0);
}

}  // namespace
