#pragma once

// A launcher's side of the Tollmere Steam Helper: starts the helper, asks it for the user's identity, has it start
// games. Copy this file and tollmere_launcher_client.cpp, or use the CMake package beside them. C++20, nothing else;
// Windows and Linux. README.md has an example. All text is UTF-8.
//
// Most launchers need SteamHelper alone, at the end. What stands before it is for those who speak the protocol
// themselves.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace launcher {

// ---- The protocol. Pure: bytes in, results out, no I/O. Free-threaded.
//
// A frame is a length (four bytes, least significant first, not counting itself), an id, a ':' and a body. A body is a
// message name and fields, with one ':' between every two.

// The id that the helper's subsystem answers to.
inline constexpr std::string_view kSteamId = "STEA";

// What the helper takes in one read, and so the most that may be written at once, in bytes.
inline constexpr std::size_t kMaxWrite = 65536;

std::string MakeFrame(std::string_view body, std::string_view id = kSteamId);

struct Frame {
    std::string m_Id;
    std::string m_Body;
};

// Cuts a stream into frames, however it arrives.
class FrameReader {
  public:
    // No answer comes near this length, in bytes; a longer one says that the stream isn't made of frames.
    static constexpr std::size_t kMaxLength = 1 << 20;

    void Feed(std::string_view bytes) { m_Bytes.append(bytes); }

    // The next whole frame; nothing when more bytes are needed, or the stream is broken.
    std::optional<Frame> Next();

    // True from a frame on that claims too much or has no ':'. There is no way back into step.
    bool IsBroken() const { return m_Broken; }

  private:
    std::string m_Bytes;
    bool m_Broken = false;
};

// `text` between quotes, with a backslash before each quote and backslash: the form in which a field may hold anything.
std::string QuoteField(std::string_view text);

// The arguments as one command line, as CommandLineToArgvW takes it apart. The first is the program's name.
std::string CommandLine(const std::vector<std::string>& arguments);

std::string InfoRequest(std::uint64_t requestId);
// The three texts are given as they are; they are quoted here.
std::string LaunchRequest(std::uint64_t requestId, std::string_view executable, std::string_view directory,
                          std::string_view arguments);

struct InfoResponse {
    std::uint64_t m_RequestId = 0;
    std::uint64_t m_SteamId = 0;
    std::string m_PersonaName;         // may hold colons
    std::uint32_t m_TicketLength = 0;  // bytes
    std::string m_Ticket;              // two hexadecimal digits a byte, or empty, whatever the length says
};

struct LaunchResponse {
    std::uint64_t m_RequestId = 0;
    std::uint32_t m_ProcessId = 0;
};

struct Failure {
    std::uint64_t m_RequestId = 0;
};

using Answer = std::variant<InfoResponse, LaunchResponse, Failure>;

// Nothing if `body` isn't one of the three.
std::optional<Answer> ParseAnswer(std::string_view body);

std::uint64_t RequestIdOf(const Answer& answer);

// ---- The launcher's end of the pipe. One thread at a time uses an object.

using Milliseconds = std::chrono::milliseconds;

enum class Outcome {
    Done,
    TimedOut,
    Lost,  // the other end is gone, or was never there
    Canceled,
};

class PipeClient {
  public:
    PipeClient() = default;
    PipeClient(PipeClient&&) = default;  // at its end it closes
    PipeClient& operator=(PipeClient&&) = default;

    // One try to open `\\.\pipe\NAME`; `name` is NAME alone. False if there is no pipe, or it is busy or denied.
    bool TryOpen(const std::string& name);
    // Whether the last try found a pipe, but one that serves somebody else or doesn't listen; or that the user may not
    // open.
    bool FoundBusy() const { return m_Found == Found::Busy; }
    bool FoundDenied() const { return m_Found == Found::Denied; }

    // Whether there is a pipe, free or not, without opening it.
    static bool IsThere(const std::string& name);

    // Writes all of `bytes`, or as much as goes in before the outcome is not Done.
    Outcome Write(std::string_view bytes, Milliseconds limit, const std::stop_token& stop = {});

    // Waits for at least one byte and appends what is there, up to 65,536 bytes, to `bytes`.
    Outcome Read(std::string& bytes, Milliseconds limit, const std::stop_token& stop = {});

    // Of the process at the other end; 0 if it can't be told.
    std::uint32_t ServerProcessId() const;

    void Close() { m_Connection.reset(); }
    bool IsOpen() const { return m_Connection != nullptr; }

  private:
    struct Connection;
    enum class Found { Nothing, Busy, Denied };

    std::shared_ptr<Connection> m_Connection;
    Found m_Found = Found::Nothing;
};

// ---- The client.

// One way in which a call fails.
struct FailureKind {
    const char* m_Code;    // for programs: "steam-refuses"
    const char* m_Phase;   // "start", "run", "launch" or "call"
    const char* m_Log[2];  // lines of the helper's log that tell it, with `*` for what differs; null: none
    const char* m_Text;    // what is wrong, for people
    const char* m_Advice;  // what to do about it
};

// All of them. Of those that match a log the first one is the reason.
std::span<const FailureKind> Failures();

// What every call of the client throws if it fails; only memory that runs out comes as std::bad_alloc.
class HelperError : public std::runtime_error {
  public:
    // `code` is one of Failures().
    explicit HelperError(std::string_view code, const std::string& detail = {});
    std::string_view Code() const { return m_Kind->m_Code; }
    std::string_view Phase() const { return m_Kind->m_Phase; }
    std::string_view Text() const { return m_Kind->m_Text; }
    std::string_view Advice() const { return m_Kind->m_Advice; }
    // What this case adds, such as an exit code; may be empty. Never a ticket.
    const std::string& Detail() const { return m_Detail; }

  private:
    const FailureKind* m_Kind;
    std::string m_Detail;
};

// How long a call may take as a whole, and what cancels it, on any thread.
struct Call {
    Milliseconds m_Timeout = std::chrono::hours{24 * 365};
    std::stop_token m_Stop = {};
};

// What to do about a helper that somebody else has started: wait until it has ended, be its client, or fail.
enum class OtherHelper { Wait, Use, Fail };

struct StartOptions {
    std::string m_Helper;       // path of tollmere_steam_helper.exe
    std::uint32_t m_AppId = 0;  // 1 to 2147483647
    // The game's, for a second attempt at Steam; at most 259 bytes. Empty: the helper takes the launcher's folder.
    std::string m_Directory = {};
    OtherHelper m_OtherHelper = OtherHelper::Wait;
    Milliseconds m_AnswerTimeout = std::chrono::seconds{5};   // a helper that takes longer is stuck
    Milliseconds m_LaunchTimeout = std::chrono::seconds{30};  // for a launch: the system may scan the game first
    Milliseconds m_StartTimeout = std::chrono::seconds{60};   // from a start to an open pipe
    Milliseconds m_WaitTimeout = std::chrono::seconds{60};    // for the end of somebody else's helper
    std::map<std::string, std::string> m_Environment = {};    // further variables for the helper and its games
};

struct SteamIdentity {
    std::uint64_t m_SteamId = 0;
    std::string m_Name;
    std::vector<std::uint8_t> m_Ticket;  // empty: none. For your server alone: write it nowhere.
};

struct GameStart {
    std::string m_Exe;                     // relative paths start at the current directory
    std::string m_Directory = {};          // empty: the folder of m_Exe
    std::vector<std::string> m_Args = {};  // without the program's name, which is put in front
};

class Process;

// A game that was started. Copies are the same game; one thread at a time.
class Game {
  public:
    explicit Game(std::shared_ptr<Process> process) : m_Process(std::move(process)) {}
    std::uint32_t ProcessId() const;
    // Waits until the game has ended.
    void Ended(const Call& call = {}) const;

  private:
    std::shared_ptr<Process> m_Process;
};

// The helper and the connection to it. One thread at a time uses an object; it has no thread of its own.
//
// A call that finds the connection broken reconnects. It starts the helper again if that has ended or doesn't
// answer, at most twice. When the object goes it leaves the helper, which ends 20 s later.
class SteamHelper {
  public:
    // Starts the helper and connects to it. The helper outlives the launcher. If this fails, the helper that it has
    // started is ended.
    static SteamHelper Start(StartOptions options, const Call& call = {});

    SteamIdentity Identity(const Call& call = {});

    // Asks for the launch once. If the connection breaks or no answer comes then, the detail of the error says that the
    // game may run.
    Game Launch(const GameStart& start, const Call& call = {});

    // Closes the connection. The helper ends 20 s later, unless a call comes back to it.
    void Leave();

    // Ends the helper now, unless somebody else has started it: as if its window were closed, and hard after 5 s, or
    // when the call's time is over or it is canceled. Every later call fails.
    void Stop(const Call& call = {});

    // How often the helper was started again.
    int Restarts() const { return m_Restarts; }
    // Of our own helper; 0 if it has ended or we are somebody else's client.
    std::uint32_t HelperProcessId() const;

  private:
    struct Limits;

    explicit SteamHelper(StartOptions options);
    void Connect(Limits& limits);
    void StartOwn(Limits& limits);
    void TakeEnd(Limits& limits);
    HelperError WhyEnded() const;
    InfoResponse Ask(Limits& limits);
    Outcome Exchange(const std::string& body, Milliseconds limit, const Limits& limits, const std::string& danger,
                     Answer& answer);
    void RequireNotStopped() const;

    StartOptions m_Options;
    std::map<std::string, std::optional<std::string>> m_Changes;  // to the environment
    std::string m_Log;                                            // the file, without ".log"
    PipeClient m_Pipe;
    std::shared_ptr<Process> m_Own;  // null: none, or it is known to have ended
    std::uintmax_t m_LogSize = 0;    // when it was started, in bytes
    std::uint64_t m_LastRequest = 0;
    int m_Restarts = 0;
    bool m_WasConnected = false;
    bool m_IsOwed = false;  // an answer: a helper that can't be reached then is stuck
    bool m_Stopped = false;
};

}  // namespace launcher
