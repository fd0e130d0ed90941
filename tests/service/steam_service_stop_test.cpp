// The stop under load: the worker takes the service down while the launcher's frames, connections and disconnections
// arrive on the wait thread. What it proves it proves under the thread and address sanitizers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>

#include "pipe/subsystem_base.h"
#include "platform/posix/testing/clock.h"
#include "platform/posix/testing/faults.h"
#include "service/steam_service.h"
#include "tests/support/limits.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"
#include "tools/launcher_client/frames.h"
#include "tools/launcher_client/pipe_client.h"

namespace {

using std::chrono::milliseconds;

// Connects, sends a few frames, reads or not, and leaves; over and over, while it is let go.
class Hammer {
  public:
    Hammer() : m_Thread([this] { Run(); }) {}
    ~Hammer() {
        m_Stop = true;
        m_Thread.join();
    }
    int Connections() const { return m_Connections; }
    int Answers() const { return m_Answers; }
    // A client that never pauses would come between the pipe's creation and its listening nearly every time. When this
    // has stopped the hammer, no visit of it is under way any more.
    void LetGo(bool go) {
        m_Go = go;
        const std::lock_guard visit(m_Visit);
    }

  private:
    void Run() {
        const std::string requests = launcher::MakeFrame("info_request:1") + launcher::MakeFrame("launch_request:2") +
                                     launcher::MakeFrame("info_request:3");
        for (int round = 0; !m_Stop; ++round) {
            {
                const std::lock_guard visit(m_Visit);
                if (m_Go) Visit(round, requests);
            }
            std::this_thread::yield();
        }
    }

    void Visit(int round, const std::string& requests) {
        launcher::PipeClient client;
        if (!client.TryOpen("TollmereSteamHelper")) return;
        ++m_Connections;
        for (int i = 0; i < round % 8; ++i) client.Write(requests, milliseconds(100));
        std::string answer;
        if (round % 3 == 0 && client.Read(answer, milliseconds(20)) == launcher::Outcome::Done) ++m_Answers;
    }

    std::atomic<bool> m_Stop = false;
    std::atomic<bool> m_Go = false;
    std::mutex m_Visit;
    std::atomic<int> m_Connections = 0;
    std::atomic<int> m_Answers = 0;
    std::thread m_Thread;
};

class SteamServiceStop : public testing::Test {
  protected:
    SteamServiceStop() {
        SetEnvironmentVariableA("SteamAppId", "480");
        SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", m_Pipes.Path().c_str());
    }

  private:
    test_support::TempFolder m_Pipes;

  protected:
    test_support::LogCapture log;
};

TEST_F(SteamServiceStop, AThousandTimesUnderLoad) {
    Hammer hammer;
    for (int i = 0; i < 1000; ++i) {
        SteamService service;
        ASSERT_TRUE(service.Init());
        const int connections = hammer.Connections();
        hammer.LetGo(true);
        // Every other time the launcher is there; else it may be anywhere.
        if (i % 2 == 0) {
            EXPECT_TRUE(test_support::WaitUntil([&] { return hammer.Connections() > connections; }));
        }
        service.Tick();
        service.Shutdown();
        hammer.LetGo(false);
        EXPECT_TRUE(g_Subsystems.empty());
    }
    EXPECT_GT(hammer.Answers(), 0);
}

// The 20 seconds run out while the service is being taken down, or has just been.
TEST_F(SteamServiceStop, ATimeOutThatComesDueFindsNothingToTouch) {
    log.ArmFlushTimer();
    const int handles = platform_testing::OpenHandleCount();
    for (int i = 0; i < 50; ++i) {
        std::thread clock;
        {
            SteamService service;
            ASSERT_TRUE(service.Init());
            clock = std::thread([] { platform_testing::AdvanceClock(milliseconds(20'001)); });
            service.Shutdown();
        }
        clock.join();
    }
    log.Lines();
    log.ArmFlushTimer();
    EXPECT_EQ(platform_testing::OpenHandleCount(), handles);
}

}  // namespace
