// How long processes take: a game, started by the helper or directly, and the helper itself from its start to its end.

#include <stdexcept>
#include <thread>

#include "bench/client.h"
#include "clients/cpp/tollmere_launcher_client.h"
#include "diagnostics/text.h"
#include "platform/error_mode.h"
#include "support/child_process.h"

// Short against a start, long against the question whether it is over.
static constexpr std::chrono::microseconds kPoll{100};

// The next start is not to be slowed down by the game of the last, which is over by then.
static void LetGameEnd() {
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

static Clock::duration LaunchByHelper(Client& helper, const std::string& game, const std::string& directory) {
    const std::string frame = launcher::MakeFrame(launcher::LaunchRequest(1, game, directory, ""));
    const Clock::time_point begin = Clock::now();
    const std::string_view answer = helper.Ask(frame);
    const Clock::duration time = Clock::now() - begin;

    launcher::FrameReader reader;
    reader.Feed(answer);
    const auto parsed = launcher::ParseAnswer(reader.Next().value_or(launcher::Frame{}).m_Body);
    const bool launched = parsed && std::holds_alternative<launcher::LaunchResponse>(*parsed);
    if (!launched) throw std::runtime_error("the helper hasn't started the game");
    LetGameEnd();
    return time;
}

static Clock::duration LaunchDirectly(const WideString& game, const WideString& directory) {
    WideString arguments;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    const NoErrorDialogs scope;
    const Clock::time_point begin = Clock::now();
    const BOOL started = CreateProcessW(game.c_str(), arguments.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                        directory.c_str(), &startup, &process);
    const Clock::duration time = Clock::now() - begin;
    if (!started) throw std::runtime_error("the game can't be started");
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    LetGameEnd();
    return time;
}

void MeasureLaunch(const Texts& arguments) {
    const std::string& game = arguments.at(2);
    const std::string& directory = arguments.at(3);
    Client helper("helper", arguments.at(1));
    helper.Open();
    const auto launchDirectly = [wideGame = Utf8ToWide(game.c_str()), wideDirectory = Utf8ToWide(directory.c_str())] {
        return Times{LaunchDirectly(wideGame, wideDirectory)};
    };
    TakeTurns("launch", std::stoi(arguments.at(0)),
              {{"helper", [&] { return Times{LaunchByHelper(helper, game, directory)}; }}, {"floor", launchDirectly}});
}

// From the start until the pipe at `path` listens, and from the closing of the window until the process is gone.
// `phase` shifts the closing against the process's tick.
static Times StartAndClose(const support::ChildProcess::Start& start, const std::string& path,
                           std::chrono::milliseconds phase) {
    Clock::time_point begin = Clock::now();
    support::ChildProcess process(start);
    while (!IsListening(path)) {
        if (!process.IsRunning()) throw std::runtime_error("ended before it listened at " + path);
        std::this_thread::sleep_for(kPoll);
    }
    const Clock::duration started = Clock::now() - begin;

    std::this_thread::sleep_for(std::chrono::milliseconds(40) + phase);
    begin = Clock::now();
    if (!process.RequestClose()) throw std::runtime_error("has no window: " + start.m_Program.string());
    while (process.IsRunning()) std::this_thread::sleep_for(kPoll);
    return {started, Clock::now() - begin};
}

void MeasureStartAndClose(const Texts& arguments) {
    // Wherever in its pause of 33 ms a process is closed, the rounds go over all of it.
    constexpr int kTick = 33, kPhaseStep = 7;
    std::vector<Contender> contenders;
    for (auto at = arguments.begin() + 1; arguments.end() - at >= 4;) {
        const std::string name = *at++, path = *at++;
        const auto count = std::stol(*at++);
        support::ChildProcess::Start start;
        start.m_Program = std::filesystem::path(std::u8string(at->begin(), at->end()));
        start.m_Arguments.assign(at + 1, at + count);
        start.m_Directory = start.m_Program.parent_path();
        at += count;
        contenders.push_back({name, [start, path, round = 0]() mutable {
                                  return StartAndClose(start, path,
                                                       std::chrono::milliseconds(round++ * kPhaseStep % kTick));
                              }});
    }
    TakeTurns("start-and-close", std::stoi(arguments.at(0)), contenders);
}
