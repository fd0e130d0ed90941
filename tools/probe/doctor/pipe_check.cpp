#include <algorithm>
#include <thread>

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/open_pipe.h"
#include "tools/probe/doctor/checks.h"
#include "tools/probe/doctor/pipe_look.h"
#include "tools/probe/doctor/processes.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const std::string kName = "pipe";

struct Seen {
    PipeState m_State = PipeState::None;
    std::vector<ProcessLook> m_Helpers;

    bool HasOwn() const {
        return std::any_of(m_Helpers.begin(), m_Helpers.end(),
                           [](const ProcessLook& helper) { return helper.m_Relation != Relation::OtherUser; });
    }
    std::string Helpers() const {
        std::string all;
        for (const ProcessLook& helper : m_Helpers) all += (all.empty() ? "" : "; ") + Describe(helper);
        return all;
    }
};

// A helper that starts or ends is for some time without a pipe.
Seen Look(const Options& options) {
    constexpr milliseconds kPause{50};
    const Clock::time_point end = Clock::now() + options.m_Timeout;
    for (;;) {
        // In this order: who serves a pipe that is seen is seen, too.
        const PipeState state = LookAtPipe(options.m_Pipe);
        Seen seen{state, FindHelpers(options.m_Pipe)};
        const bool isClear = state != PipeState::None || seen.m_Helpers.empty();
        if (isClear || Clock::now() >= end) return seen;
        std::this_thread::sleep_for(kPause);
    }
}

Check Ask(launcher::PipeClient& pipe, const std::string& owner, milliseconds limit) {
    constexpr std::uint64_t kRequestId = 1;
    const Clock::time_point end = Clock::now() + limit;
    launcher::Outcome outcome = pipe.Write(launcher::MakeFrame(launcher::InfoRequest(kRequestId)), limit);
    launcher::FrameReader frames;
    while (outcome == launcher::Outcome::Done) {
        if (const std::optional<launcher::Frame> frame = frames.Next()) {
            const auto answer = launcher::ParseAnswer(frame->m_Body);
            const bool fits = answer && std::holds_alternative<launcher::InfoResponse>(*answer) &&
                              launcher::RequestIdOf(*answer) == kRequestId;
            return fits ? Healthy(kName, owner + " answers") : Failing(kName, "bad-answer", owner);
        }
        if (frames.IsBroken()) return Failing(kName, "bad-answer", owner);
        std::string bytes;
        outcome = pipe.Read(bytes, std::max(milliseconds{0}, std::chrono::ceil<milliseconds>(end - Clock::now())));
        frames.Feed(bytes);
    }
    if (outcome == launcher::Outcome::Lost) return Failing(kName, "connection-lost", owner);
    return Failing(kName, "no-answer", owner + " doesn't answer within " + std::to_string(limit.count()) + " ms");
}

Check ConnectAndAsk(const Options& options, const Seen& seen) {
    launcher::PipeClient pipe;
    if (!support::OpenPipe(pipe, options.m_Pipe, options.m_Timeout)) {
        if (LookAtPipe(options.m_Pipe) == PipeState::None) return Healthy(kName, "free: the helper has just ended");
        return Failing(kName, pipe.FoundBusy() ? "other-helper" : "pipe-denied", seen.Helpers());
    }
    const std::optional<ProcessLook> owner = LookAtProcess(pipe.ServerProcessId());
    return Ask(pipe, owner ? Describe(*owner) : "a process that the system doesn't tell", options.m_Timeout);
}

}  // namespace

Check CheckPipe(const Options& options) {
    const Seen seen = Look(options);
    if (seen.m_State == PipeState::None) {
        if (seen.m_Helpers.empty()) return Healthy(kName, "free: no helper runs");
        return Failing(kName, "not-connected", "without a pipe: " + seen.Helpers());
    }
    if (options.m_Connect) return ConnectAndAsk(options, seen);
    if (seen.m_Helpers.empty()) return Failing(kName, "bad-answer", "there is a pipe, but no helper");
    if (!seen.HasOwn()) return Failing(kName, "pipe-taken", seen.Helpers());
    if (seen.m_State == PipeState::Busy) {
        return Failing(kName, "other-helper", "it serves a launcher, or is stuck: " + seen.Helpers());
    }
    return Healthy(kName, "waits for a launcher: " + seen.Helpers());
}
