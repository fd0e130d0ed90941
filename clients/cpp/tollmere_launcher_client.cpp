#include "tollmere_launcher_client.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <thread>
#include <utility>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// The order matters: the other needs the types of windows.h.
#include <shlobj.h>
#ifdef _MSC_VER
#pragma comment(lib, "shell32")
#pragma comment(lib, "user32")
#endif
#else
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#endif

namespace launcher {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Variables = std::map<std::string, std::optional<std::string>>;  // without a value: not set

// clang-format off
constexpr FailureKind kFailures[] = {
    {"no-app-id", "start", {"Invalid steam app id"},
     "The helper got no app id.",
     "Start the helper with the number of the app, from 1 to 2147483647, in SteamAppId or in -steamAppID."},
    {"no-steam-library", "start", {"Steam DLL could not be loaded from '*'"},
     "The helper can't load steam_api64.dll.",
     "Put steam_api64.dll for 64 bits into the helper's folder. The path of the helper must be shorter than 260 characters."},
    {"wrong-steam-library", "start", {"Could not map function: *"},
     "steam_api64.dll lacks a function that the helper needs.",
     "Replace steam_api64.dll by the one of a newer version of Steam's tools."},
    {"steam-without-interface", "start", {"SteamAPI_Init completed, requesting Steam interfaces.", "Error initializing Steam."},
     "Steam is up, but doesn't give an interface that the helper needs.",
     "Update Steam. If that doesn't help, steam_api64.dll and Steam don't fit each other."},
    {"steam-refuses", "start", {"Attempting initialization of Steam API from game directory: *", "Error initializing Steam."},
     "Steam refuses the app.",
     "Start Steam, log on, and check that the user owns the app. Steam must run as the same user and with the same rights as the launcher."},
    {"steam-refuses-no-directory", "start", {"Attempting initialization of Steam API in current directory", "Error initializing Steam."},
     "Steam refuses the app, and the helper knows no game directory for a second attempt.",
     "Give the directory of the game. Start Steam, log on, and check that the user owns the app. Steam must run as the same user and with the same rights as the launcher."},
    {"pipe-taken", "start", {"Unable to create pipe.", "Last error: 231 *"},
     "Another helper runs on this machine.",
     "Wait until it has ended, 20 seconds after its launcher has left. It may belong to another user who is logged on."},
    {"pipe-not-created", "start", {"Unable to create pipe."},
     "Windows refuses the helper its pipe.",
     "Look up the number behind \"Last error:\" in the helper's log. If it is 5, another program holds a pipe of this name."},
    {"pipe-not-listening", "start", {"Unable to connect pipe.", "Failed to create pipe."},
     "The helper's pipe can't listen.",
     "Start again. If it stays, look up the number behind \"Last error:\" in the helper's log."},
    {"no-window", "start", {"Failed to initialize message window. Aborting process with code 1."},
     "Windows gives the helper no window.",
     "Start it on a user's desktop, not in a service. Close programs if the desktop is out of resources."},
    {"no-worker", "start", {"Failed to start worker thread (*). Aborting process with code 1."},
     "Windows gives the helper no thread.",
     "The machine is out of memory or threads. Close programs and start again."},
    {"out-of-memory", "run", {"Unhandled exception (*). Aborting process with code 3."},
     "The helper ran out of memory and ended.",
     "The machine is out of memory. Close programs and start again."},
    {"nobody-came", "run", {"Connection timed out, terminating."},
     "The helper ended because no launcher was connected for 20 seconds.",
     "Connect within 20 seconds after the start, and stay connected for as long as the helper is needed."},
    {"closed-from-outside", "run", {"SteamService :: Shutdown"},
     "Somebody closed the helper.",
     "Start again. The user was logged off, or another program ended the helper."},
    {"ended-without-reason", "run", {},
     "The helper's process ended, and its log doesn't tell why.",
     "It was killed, or it can't write its log: check the log's folder. The exit code tells more."},
    {"helper-missing", "start", {},
     "The helper's program isn't there.",
     "Check the path, and whether another program, such as a virus scanner, has removed the file."},
    {"helper-not-started", "start", {},
     "The system doesn't start the helper's program.",
     "Look up the system's number. 740: the file is set to run as administrator; 193: it is no program for this machine; 5: the user may not run it."},
    {"other-helper", "start", {},
     "A helper that somebody else started is running.",
     "Wait until its launcher has left it for 20 seconds, or leave that launcher."},
    {"pipe-denied", "start", {},
     "The user may not open the helper's pipe.",
     "Run the launcher as a user who is logged on, not as a guest or in a sandbox."},
    {"not-connected", "start", {},
     "The helper runs, but its pipe can't be opened in time.",
     "Start again. If it stays, another program may hold the pipe, or Steam takes very long to start."},
    {"no-answer", "run", {},
     "The helper doesn't answer, not even after it was started again.",
     "Close the launcher and all helpers, and start again. Keep the helper's log for those who support it."},
    {"connection-lost", "run", {},
     "The connection to the helper was lost.",
     "Call again: the client reconnects, and starts the helper if need be."},
    {"bad-answer", "run", {},
     "The other end of the pipe doesn't speak the helper's protocol.",
     "Another program holds a pipe of this name, or helper and client don't fit each other."},
    {"game-missing", "launch", {},
     "The game's program isn't there.",
     "Check the path of the game's program."},
    {"game-directory-missing", "launch", {},
     "The game's directory isn't there.",
     "Check the directory. It must be a folder that exists."},
    {"game-not-a-program", "launch", {},
     "The game's file isn't a program that this machine can start.",
     "Give the path of the program itself, not of a folder, a shortcut or a script."},
    {"game-refused", "launch", {},
     "Windows refuses to start the game.",
     "The game may need an administrator's rights (Windows' number 740), which the helper can't give, or a virus scanner holds it."},
    {"bad-argument", "call", {},
     "The call has an argument that makes no sense.",
     "Read the detail: it names the argument. Nothing was sent."},
    {"timed-out", "call", {},
     "The call took longer than its caller allows.",
     "Call again, or allow more time."},
    {"canceled", "call", {},
     "The caller canceled the call.",
     "None is needed."},
    {"stopped", "call", {},
     "This client was stopped before the call.",
     "Start a new one."},
};
// clang-format on

constexpr char kPipeName[] = "TollmereSteamHelper";
constexpr std::size_t kLengthSize = 4;
constexpr std::size_t kBufferSize = 65536;
constexpr Milliseconds kLongest = std::chrono::hours{24 * 365};
constexpr Milliseconds kPause{50};
constexpr Milliseconds kEndLimit{5000};  // of a process that was asked, or made, to end
constexpr int kMostRestarts = 2;         // over one call

Clock::time_point After(Milliseconds time) {
    return Clock::now() + std::min(time, kLongest);
}

// From now until `end`, for calls of the system; their numbers are shorter than the clock's.
int Left(Clock::time_point end) {
    const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

fs::path Path(std::string_view text) {
    return {std::u8string(text.begin(), text.end())};
}

fs::path Absolute(std::string_view text) {
    std::error_code error;
    return fs::absolute(Path(text), error).make_preferred();
}

std::string Text(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace

// ---- The protocol.

namespace {

// Takes the text up to the next ':' off the front of `rest`, the ':' as well; nothing if there is no ':'.
std::optional<std::string_view> TakeFirst(std::string_view& rest) {
    const std::size_t colon = rest.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view field = rest.substr(0, colon);
    rest.remove_prefix(colon + 1);
    return field;
}

// The same off the end.
std::optional<std::string_view> TakeLast(std::string_view& rest) {
    const std::size_t colon = rest.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view field = rest.substr(colon + 1);
    rest = rest.substr(0, colon);
    return field;
}

// False unless `field` is there and is a number that fits, and nothing else.
template <class Number>
bool ReadNumber(std::optional<std::string_view> field, Number& number, int base = 10) {
    if (!field || field->empty()) return false;
    const char* const end = field->data() + field->size();
    const auto [stop, error] = std::from_chars(field->data(), end, number, base);
    return error == std::errc() && stop == end;
}

// Two digits a byte; nothing if `digits` is something else.
std::optional<std::vector<std::uint8_t>> ReadBytes(std::string_view digits) {
    std::vector<std::uint8_t> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!ReadNumber(digits.substr(2 * i, 2), bytes[i], 16)) return std::nullopt;
    }
    return digits.size() % 2 == 0 ? std::optional(bytes) : std::nullopt;
}

std::optional<Answer> ParseInfo(std::string_view fields) {
    InfoResponse info;
    if (!ReadNumber(TakeFirst(fields), info.m_RequestId)) return std::nullopt;
    if (!ReadNumber(TakeFirst(fields), info.m_SteamId)) return std::nullopt;
    // From the end, because the name between may hold any number of colons.
    const std::optional<std::string_view> ticket = TakeLast(fields);
    if (!ReadNumber(TakeLast(fields), info.m_TicketLength)) return std::nullopt;
    const auto bytes = ReadBytes(*ticket);
    if (!bytes || (!bytes->empty() && bytes->size() != info.m_TicketLength)) return std::nullopt;
    info.m_Ticket = *ticket;
    info.m_PersonaName = fields;
    return info;
}

}  // namespace

std::string MakeFrame(std::string_view body, std::string_view id) {
    const std::size_t length = id.size() + 1 + body.size();
    std::string frame;
    for (std::size_t i = 0; i < kLengthSize; ++i) frame += static_cast<char>(length >> (8 * i) & 0xFF);
    return frame.append(id).append(1, ':').append(body);
}

std::optional<Frame> FrameReader::Next() {
    if (m_Broken || m_Bytes.size() < kLengthSize) return std::nullopt;
    std::size_t length = 0;
    for (std::size_t i = kLengthSize; i-- > 0;) length = length << 8 | static_cast<unsigned char>(m_Bytes[i]);
    m_Broken = length > kMaxLength;
    if (m_Broken || m_Bytes.size() - kLengthSize < length) return std::nullopt;
    std::string_view rest = std::string_view(m_Bytes).substr(kLengthSize, length);
    const std::optional<std::string_view> id = TakeFirst(rest);
    m_Broken = !id;
    if (m_Broken) return std::nullopt;
    Frame frame{std::string(*id), std::string(rest)};
    m_Bytes.erase(0, kLengthSize + length);
    return frame;
}

std::string QuoteField(std::string_view text) {
    std::string field = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') field += '\\';
        field += c;
    }
    return field += '"';
}

std::string CommandLine(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments) {
        if (!line.empty()) line += ' ';
        if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string::npos) {
            line += argument;
            continue;
        }
        // Backslashes count only before a quote.
        line += '"';
        std::size_t backslashes = 0;
        for (const char c : argument) {
            if (c == '"') line.append(backslashes + 1, '\\');
            backslashes = c == '\\' ? backslashes + 1 : 0;
            line += c;
        }
        line.append(backslashes, '\\') += '"';
    }
    return line;
}

std::string InfoRequest(std::uint64_t requestId) {
    return "info_request:" + std::to_string(requestId);
}

std::string LaunchRequest(std::uint64_t requestId, std::string_view executable, std::string_view directory,
                          std::string_view arguments) {
    return "launch_request:" + std::to_string(requestId) + ":" + QuoteField(executable) + ":" + QuoteField(directory) +
           ":" + QuoteField(arguments);
}

std::optional<Answer> ParseAnswer(std::string_view body) {
    const std::optional<std::string_view> name = TakeFirst(body);
    if (name == "info_response") return ParseInfo(body);
    LaunchResponse launch;
    if (name == "launch_response" && ReadNumber(TakeFirst(body), launch.m_RequestId) &&
        ReadNumber(body, launch.m_ProcessId)) {
        return launch;
    }
    Failure failure;
    if (name == "failure" && ReadNumber(body, failure.m_RequestId)) return failure;
    return std::nullopt;
}

std::uint64_t RequestIdOf(const Answer& answer) {
    return std::visit([](const auto& one) { return one.m_RequestId; }, answer);
}

// ---- The system.

namespace {

#ifdef _WIN32
using NativeHandle = HANDLE;
constexpr NativeHandle kNoHandle = nullptr;
#else
using NativeHandle = int;
constexpr NativeHandle kNoHandle = -1;
#endif

class Owner {
  public:
    explicit Owner(NativeHandle handle) : m_Handle(handle) {}
    Owner(Owner&& other) noexcept : m_Handle(std::exchange(other.m_Handle, kNoHandle)) {}
    ~Owner() {
        if (m_Handle != kNoHandle) Close(m_Handle);
    }
    NativeHandle Get() const { return m_Handle; }
    bool IsNone() const { return m_Handle == kNoHandle; }

  private:
    static void Close(NativeHandle handle);
    NativeHandle m_Handle;
};

}  // namespace

// A process of which we hold a handle, so that its id can't become another's.
class Process {
  public:
    Process(std::uint32_t id, Owner handle) : m_Id(id), m_Handle(std::move(handle)) {}
    ~Process() { ExitCode(); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Throws HelperError.
    static std::shared_ptr<Process> Start(const fs::path& program, const Variables& changes);
    // One that isn't there any more counts as ended.
    static std::shared_ptr<Process> Open(std::uint32_t id);

    Outcome AwaitEnd(Clock::time_point end, const std::stop_token& stop = {}) const;
    bool HasEnded() const { return AwaitEnd(Clock::now()) == Outcome::Done; }
    // Of a process that we have started and that has ended. On Linux it is minus the signal's number if one ended it,
    // and who doesn't ask leaves a zombie behind.
    int ExitCode();
    // Asks it to end as if somebody closed its window. False if it has none.
    bool RequestClose() const;
    void Kill() const;

    const std::uint32_t m_Id;

  private:
    const Owner m_Handle;
    int m_ExitCode = 0;
};

#ifdef _WIN32

namespace {

void Owner::Close(NativeHandle handle) {
    CloseHandle(handle);
}

Owner MakeEvent() {
    return Owner(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// Waits for a handle, or with none just for the time.
Outcome Await(NativeHandle handle, Clock::time_point end, const std::stop_token& stop) {
    const Owner canceled = MakeEvent();
    const std::stop_callback wake(stop, [&] { SetEvent(canceled.Get()); });
    const HANDLE handles[] = {canceled.Get(), handle};
    switch (WaitForMultipleObjects(handle == kNoHandle ? 1 : 2, handles, FALSE, static_cast<DWORD>(Left(end)))) {
        case WAIT_OBJECT_0:
            return Outcome::Canceled;
        case WAIT_OBJECT_0 + 1:
            return Outcome::Done;
        default:
            return Outcome::TimedOut;
    }
}

std::wstring Wide(const std::string& text) {
    return Path(text).wstring();
}

std::wstring PipePath(const std::string& name) {
    return L"\\\\.\\pipe\\" + Wide(name);
}

fs::path ProgramData() {
    wchar_t folder[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, folder);
    return folder;
}

// Whether the process runs, but its handle is refused.
bool IsWithheld(std::uint32_t id) {
    const Owner process(OpenProcess(SYNCHRONIZE, FALSE, id));
    return process.IsNone() && GetLastError() == ERROR_ACCESS_DENIED;
}

bool IsProgram(const fs::path& file) {
    char head[2] = {};
    return std::ifstream(file, std::ios::binary).read(head, 2) && head[0] == 'M' && head[1] == 'Z';
}

struct LessWithoutCase {
    bool operator()(const std::wstring& left, const std::wstring& right) const {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

// The block that CreateProcessW takes: "NAME=VALUE" and a NUL each, sorted, and one more NUL.
std::wstring ChangedEnvironment(const Variables& changes) {
    std::map<std::wstring, std::wstring, LessWithoutCase> variables;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; *entry != L'\0'; entry += std::char_traits<wchar_t>::length(entry) + 1) {
        const std::wstring text = entry;
        // The current directories of drives are variables too; their names begin with '='.
        const std::size_t equals = std::min(text.find(L'=', 1), text.size() - 1);
        variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : changes) {
        variables.erase(Wide(name));
        if (value) variables[Wide(name)] = Wide(*value);
    }
    std::wstring block;
    for (const auto& [name, value] : variables) block += name + L"=" + value + L'\0';
    return block + L'\0';
}

}  // namespace

struct PipeClient::Connection {
    explicit Connection(HANDLE pipe) : m_Pipe(pipe) {}

    // Resets the record for a request that is about to start. The event is reset by the request itself.
    OVERLAPPED* Begin() {
        m_Operation = {};
        m_Operation.hEvent = m_Done.Get();
        return &m_Operation;
    }

    // Takes the three outcomes of a request's start, done, pending and failed, to its end. On return the request is
    // over in every case, so that its record and its buffer may go.
    Outcome Finish(BOOL started, Clock::time_point end, const std::stop_token& stop, DWORD& count) {
        if (!started && GetLastError() != ERROR_IO_PENDING) return Outcome::Lost;
        const Outcome waited = Await(m_Done.Get(), end, stop);
        if (waited != Outcome::Done) CancelIoEx(m_Pipe.Get(), &m_Operation);
        // A request that was done in the moment of its canceling counts as done.
        if (GetOverlappedResult(m_Pipe.Get(), &m_Operation, &count, TRUE)) return Outcome::Done;
        return GetLastError() == ERROR_OPERATION_ABORTED && waited != Outcome::Done ? waited : Outcome::Lost;
    }

    const Owner m_Pipe;
    const Owner m_Done = MakeEvent();
    OVERLAPPED m_Operation = {};
    std::vector<char> m_Buffer = std::vector<char>(kBufferSize);
};

bool PipeClient::TryOpen(const std::string& name) {
    Close();
    // The server may learn who the client is, but may not act in its name.
    constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    const HANDLE pipe =
        CreateFileW(PipePath(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, kFlags, nullptr);
    const DWORD error = pipe == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    m_Found = error == ERROR_PIPE_BUSY ? Found::Busy : error == ERROR_ACCESS_DENIED ? Found::Denied : Found::Nothing;
    if (pipe == INVALID_HANDLE_VALUE) return false;
    auto connection = std::make_shared<Connection>(pipe);
    if (!connection->m_Done.IsNone()) m_Connection = std::move(connection);
    return IsOpen();
}

bool PipeClient::IsThere(const std::string& name) {
    // It waits a millisecond for one that is busy.
    return WaitNamedPipeW(PipePath(name).c_str(), 1) || GetLastError() != ERROR_FILE_NOT_FOUND;
}

Outcome PipeClient::Write(std::string_view bytes, Milliseconds limit, const std::stop_token& stop) {
    const Clock::time_point end = After(limit);
    Outcome outcome = IsOpen() ? Outcome::Done : Outcome::Lost;
    while (outcome == Outcome::Done && !bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 30));
        const BOOL started = WriteFile(m_Connection->m_Pipe.Get(), bytes.data(), size, nullptr, m_Connection->Begin());
        DWORD count = 0;
        outcome = m_Connection->Finish(started, end, stop, count);
        bytes.remove_prefix(count);
    }
    return outcome;
}

Outcome PipeClient::Read(std::string& bytes, Milliseconds limit, const std::stop_token& stop) {
    if (!IsOpen()) return Outcome::Lost;
    char* const buffer = m_Connection->m_Buffer.data();
    const BOOL started = ReadFile(m_Connection->m_Pipe.Get(), buffer, kBufferSize, nullptr, m_Connection->Begin());
    DWORD count = 0;
    const Outcome outcome = m_Connection->Finish(started, After(limit), stop, count);
    bytes.append(buffer, count);
    // Zero bytes are no end in byte mode, but nothing else can be made of them either.
    return outcome == Outcome::Done && count == 0 ? Outcome::Lost : outcome;
}

std::uint32_t PipeClient::ServerProcessId() const {
    ULONG id = 0;
    return IsOpen() && GetNamedPipeServerProcessId(m_Connection->m_Pipe.Get(), &id) ? id : 0;
}

std::shared_ptr<Process> Process::Start(const fs::path& program, const Variables& changes) {
    const std::wstring directory = program.parent_path().wstring();
    std::wstring commandLine = L"\"" + program.wstring() + L"\"", environment = ChangedEnvironment(changes);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    // Out of the launcher's job, which may end with it; a job may forbid that.
    for (const DWORD flag : {DWORD{CREATE_BREAKAWAY_FROM_JOB}, DWORD{0}}) {
        if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                           CREATE_UNICODE_ENVIRONMENT | DETACHED_PROCESS | flag, environment.data(), directory.c_str(),
                           &startup, &started)) {
            const Owner thread(started.hThread);
            return std::make_shared<Process>(started.dwProcessId, Owner(started.hProcess));
        }
    }
    throw HelperError("helper-not-started", "the system's number is " + std::to_string(GetLastError()));
}

std::shared_ptr<Process> Process::Open(std::uint32_t id) {
    return std::make_shared<Process>(id, Owner(OpenProcess(SYNCHRONIZE, FALSE, id)));
}

int Process::ExitCode() {
    DWORD code = 0;
    GetExitCodeProcess(m_Handle.Get(), &code);
    return m_ExitCode = static_cast<int>(code);
}

bool Process::RequestClose() const {
    HWND window = nullptr;
    while ((window = FindWindowExW(HWND_MESSAGE, window, L"Tollmere Steam Helper", nullptr)) != nullptr) {
        DWORD owner = 0;
        if (GetWindowThreadProcessId(window, &owner) != 0 && owner == m_Id) break;
    }
    return window != nullptr && PostMessageW(window, WM_CLOSE, 0, 0);
}

void Process::Kill() const {
    TerminateProcess(m_Handle.Get(), 1);
    AwaitEnd(After(kEndLimit));
}

#else

namespace {

void Owner::Close(NativeHandle handle) {
    close(handle);
}

// Waits for a descriptor, or with none just for the time. The end of a connection counts as well.
Outcome Await(NativeHandle handle, Clock::time_point end, const std::stop_token& stop, short events = POLLIN) {
    const Owner canceled(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    const std::stop_callback wake(stop, [&] { eventfd_write(canceled.Get(), 1); });
    pollfd entries[] = {{canceled.Get(), POLLIN, 0}, {handle, events, 0}};
    int ready = 0;
    do {
        ready = poll(entries, 2, Left(end));
    } while (ready < 0 && errno == EINTR);
    if (entries[0].revents != 0) return Outcome::Canceled;
    return ready > 0 ? Outcome::Done : Outcome::TimedOut;
}

// The first that is set and not empty; else nothing.
std::string Variable(std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

// A pipe is a Unix stream socket named after it.
std::string PipePath(const std::string& name) {
    const std::string folder = Variable({"TOLLMERE_PIPE_DIR", "XDG_RUNTIME_DIR"});
    return (folder.empty() ? "/tmp/tollmere-" + std::to_string(getuid()) : folder) + "/" + name;
}

fs::path ProgramData() {
    const std::string folder = Variable({"TOLLMERE_PROGRAM_DATA", "XDG_STATE_HOME"});
    return folder.empty() ? fs::path(Variable({"HOME"})) / ".local/state" : fs::path(folder);
}

bool IsWithheld(std::uint32_t) {
    return false;
}

bool IsProgram(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0;
}

std::vector<std::string> ChangedEnvironment(const Variables& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('=')))) result.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (value) result.push_back(name + "=" + *value);
    }
    return result;
}

}  // namespace

struct PipeClient::Connection {
    const Owner m_Socket;
};

bool PipeClient::TryOpen(const std::string& name) {
    Close();
    m_Found = Found::Nothing;
    const std::string path = PipePath(name);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    // Non-blocking: where the server takes nobody in, the try fails instead of queueing.
    Owner client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (path.size() >= sizeof address.sun_path || client.IsNone()) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if (errno == ECONNREFUSED || errno == EAGAIN) m_Found = Found::Busy;
        if (errno == EACCES || errno == EPERM) m_Found = Found::Denied;
        return false;
    }
    m_Connection = std::shared_ptr<Connection>(new Connection{std::move(client)});
    return true;
}

// The lock beside the socket tells. Taking it, to see whether it is free, could be in a helper's way.
bool PipeClient::IsThere(const std::string& name) {
    struct stat status = {};
    if (stat((PipePath(name) + ".lock").c_str(), &status) != 0) return false;
    const std::string inode = ":" + std::to_string(status.st_ino) + " ";
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("FLOCK") != std::string::npos && line.find(inode) != std::string::npos) return true;
    }
    return false;
}

Outcome PipeClient::Write(std::string_view bytes, Milliseconds limit, const std::stop_token& stop) {
    const Clock::time_point end = After(limit);
    Outcome outcome = IsOpen() ? Outcome::Done : Outcome::Lost;
    while (outcome == Outcome::Done && !bytes.empty()) {
        outcome = Await(m_Connection->m_Socket.Get(), end, stop, POLLOUT);
        if (outcome != Outcome::Done) break;
        const ssize_t count = send(m_Connection->m_Socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count >= 0) bytes.remove_prefix(static_cast<std::size_t>(count));
        if (count < 0 && errno != EAGAIN && errno != EINTR) outcome = Outcome::Lost;
    }
    return outcome;
}

Outcome PipeClient::Read(std::string& bytes, Milliseconds limit, const std::stop_token& stop) {
    const Clock::time_point end = After(limit);
    std::string buffer(kBufferSize, '\0');
    while (IsOpen()) {
        const Outcome outcome = Await(m_Connection->m_Socket.Get(), end, stop);
        if (outcome != Outcome::Done) return outcome;
        const ssize_t count = recv(m_Connection->m_Socket.Get(), buffer.data(), buffer.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (count <= 0) break;
        bytes.append(buffer, 0, static_cast<std::size_t>(count));
        return Outcome::Done;
    }
    return Outcome::Lost;
}

std::uint32_t PipeClient::ServerProcessId() const {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (IsOpen()) getsockopt(m_Connection->m_Socket.Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return static_cast<std::uint32_t>(peer.pid);
}

// The child has a session of its own, no signal blocked or ignored, and none of our descriptors.
std::shared_ptr<Process> Process::Start(const fs::path& program, const Variables& changes) {
    std::vector<std::string> texts = ChangedEnvironment(changes);
    std::vector<char*> environment;
    for (std::string& text : texts) environment.push_back(text.data());
    environment.push_back(nullptr);
    std::string name = program.string();
    char* const arguments[] = {name.data(), nullptr};
    const std::string directory = program.parent_path().string();

    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {0, 1, 2}) posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    pid_t id = 0;
    const int error = posix_spawn(&id, name.c_str(), &actions, &attributes, arguments, environment.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) throw HelperError("helper-not-started", "the system's number is " + std::to_string(error));
    return Open(static_cast<std::uint32_t>(id));
}

std::shared_ptr<Process> Process::Open(std::uint32_t id) {
    return std::make_shared<Process>(id, Owner(static_cast<int>(syscall(SYS_pidfd_open, id, 0))));
}

int Process::ExitCode() {
    int status = 0;
    if (waitpid(static_cast<pid_t>(m_Id), &status, WNOHANG) > 0)
        m_ExitCode = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return m_ExitCode;
}

bool Process::RequestClose() const {
    return syscall(SYS_pidfd_send_signal, m_Handle.Get(), SIGTERM, nullptr, 0) == 0;
}

void Process::Kill() const {
    syscall(SYS_pidfd_send_signal, m_Handle.Get(), SIGKILL, nullptr, 0);
    AwaitEnd(After(kEndLimit));
}

#endif

Outcome Process::AwaitEnd(Clock::time_point end, const std::stop_token& stop) const {
    if (!m_Handle.IsNone()) return Await(m_Handle.Get(), end, stop);
    // A game with more rights gives us no handle: whether it is there can be seen each second.
    while (IsWithheld(m_Id)) {
        if (Clock::now() >= end) return Outcome::TimedOut;
        if (Await(kNoHandle, std::min(end, After(std::chrono::seconds{1})), stop) == Outcome::Canceled) {
            return Outcome::Canceled;
        }
    }
    return Outcome::Done;
}

// ---- The client.

namespace {

constexpr char kMayRun[] = "the game may run all the same";

void Require(bool makesSense, const char* what) {
    if (!makesSense) throw HelperError("bad-argument", what);
}

bool IsText(const std::string& text) {
    try {
        // On Windows the conversion finds what isn't UTF-8.
        static_cast<void>(Path(text));
        return text.find('\0') == std::string::npos;
    } catch (const std::system_error&) {
        return false;
    }
}

// `pattern` may hold one `*`.
bool Matches(std::string_view text, std::string_view pattern) {
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) return text == pattern;
    return text.size() + 1 >= pattern.size() && text.starts_with(pattern.substr(0, star)) &&
           text.ends_with(pattern.substr(star + 1));
}

// The texts that show what the kind's log shows, one after the other, each with "; " in front; empty if they aren't
// there.
std::string Told(const FailureKind& kind, const std::vector<std::string>& texts) {
    auto first = texts.end(), text = texts.begin();
    for (const char* const pattern : kind.m_Log) {
        if (pattern == nullptr) continue;
        text = std::find_if(text, texts.end(), [&](const std::string& one) { return Matches(one, pattern); });
        if (text == texts.end()) return {};
        if (first == texts.end()) first = text;
        ++text;
    }
    if (first == texts.end()) return {};
    // The line behind may have the system's number.
    if (text != texts.end()) ++text;
    std::string told;
    for (; first != text; ++first) told += "; " + *first;
    return told;
}

// The file from `offset` on. Other helpers open it for themselves alone, for the moment of a write.
std::string ReadFrom(const fs::path& file, std::uintmax_t offset) {
    std::error_code error;
    for (int i = 0; i < 20 && fs::exists(file, error); ++i) {
        if (std::ifstream stream(file, std::ios::binary); stream) {
            stream.seekg(static_cast<std::streamoff>(offset));
            std::ostringstream bytes;
            bytes << stream.rdbuf();  // unlike iterators it throws nothing
            return std::move(bytes).str();
        }
        std::this_thread::sleep_for(kPause);
    }
    return {};
}

std::uintmax_t SizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

// The texts of a process's lines: `[2026-11-23 14:05:09.123] [  4242] [1A2C] TEXT`.
std::vector<std::string> TextsOf(std::uint32_t processId, std::string_view log) {
    std::vector<std::string> texts;
    while (!log.empty()) {
        std::string_view line = log.substr(0, log.find('\n'));
        log.remove_prefix(std::min(log.size(), line.size() + 1));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::string_view digits = line.substr(0, line.find("] [", 25));
        const std::size_t begin = digits.find_last_of(" [") + 1;
        std::uint32_t id = 0;
        const std::size_t text = line.find("] ", std::min(digits.size() + 3, line.size()));
        if (!ReadNumber(digits.substr(begin), id) || id != processId || text == std::string_view::npos) continue;
        texts.emplace_back(line.substr(text + 2));
    }
    return texts;
}

}  // namespace

std::span<const FailureKind> Failures() {
    return kFailures;
}

static const FailureKind& KindOf(std::string_view code) {
    return *std::find_if(std::begin(kFailures), std::end(kFailures),
                         [&](const auto& one) { return code == one.m_Code; });
}

HelperError::HelperError(std::string_view code, const std::string& detail)
    : std::runtime_error(KindOf(code).m_Text + (detail.empty() ? "" : " (" + detail + ")")),
      m_Kind(&KindOf(code)),
      m_Detail(detail) {}

std::uint32_t Game::ProcessId() const {
    return m_Process->m_Id;
}

struct SteamHelper::Limits {
    Limits(const Call& call, const StartOptions& options)
        : m_End(After(call.m_Timeout)),
          m_Stop(call.m_Stop),
          m_WaitEnd(After(options.m_WaitTimeout)),
          m_OwedEnd(After(options.m_AnswerTimeout)),
          m_ConnectEnd(After(options.m_StartTimeout)) {}

    void Check(const std::string& detail = {}) const {
        if (m_Stop.stop_requested()) throw HelperError("canceled", detail);
        if (Clock::now() >= m_End) throw HelperError("timed-out", detail);
    }
    // Ends early if the process does.
    void Pause(const Process* process, Milliseconds time) const {
        const Clock::time_point end = std::min(After(time), m_End);
        process != nullptr ? process->AwaitEnd(end, m_Stop) : Await(kNoHandle, end, m_Stop);
    }

    const Clock::time_point m_End;
    const std::stop_token m_Stop;
    const Clock::time_point m_WaitEnd;
    const Clock::time_point m_OwedEnd;
    Clock::time_point m_ConnectEnd;
    int m_Restarts = 0;
    bool m_IsNew = false;  // our helper was started in this call, and we haven't been connected to it yet
};

void Game::Ended(const Call& call) const {
    const Outcome outcome = m_Process->AwaitEnd(After(call.m_Timeout), call.m_Stop);
    if (outcome != Outcome::Done) throw HelperError(outcome == Outcome::Canceled ? "canceled" : "timed-out");
}

SteamHelper::SteamHelper(StartOptions options) : m_Options(std::move(options)) {
    Require(!m_Options.m_Helper.empty() && IsText(m_Options.m_Helper), "m_Helper is no path");
    Require(m_Options.m_AppId > 0 && m_Options.m_AppId <= 0x7FFFFFFF, "m_AppId isn't from 1 to 2147483647");
    Require(IsText(m_Options.m_Directory), "m_Directory is no path");
    const std::string directory = m_Options.m_Directory.empty() ? "" : Text(Absolute(m_Options.m_Directory));
    Require(directory.size() <= 259, "m_Directory is longer than 259 bytes");
    for (const auto& [name, value] : m_Options.m_Environment) {
        Require(!name.empty() && name.find('=') == std::string::npos && IsText(name) && IsText(value),
                "m_Environment has a name or a value that no variable can have");
    }
    m_Changes = {m_Options.m_Environment.begin(), m_Options.m_Environment.end()};
    m_Changes["SteamAppId"] = std::to_string(m_Options.m_AppId);
    m_Changes["SteamLocation"] = directory.empty() ? std::nullopt : std::optional(directory);
    m_Log = Text(ProgramData() / "Tollmere Games" / "Launcher" / "tollmere_steam_helper");
}

std::uint32_t SteamHelper::HelperProcessId() const {
    return m_Own && !m_Own->HasEnded() ? m_Own->m_Id : 0;
}

SteamHelper SteamHelper::Start(StartOptions options, const Call& call) {
    SteamHelper helper(std::move(options));
    Limits limits(call, helper.m_Options);
    try {
        helper.Connect(limits);
    } catch (...) {
        if (helper.m_Own) helper.m_Own->Kill();
        throw;
    }
    return helper;
}

void SteamHelper::Connect(Limits& limits) {
    const bool mayUse = m_Options.m_OtherHelper == OtherHelper::Use;
    while (!m_Pipe.IsOpen()) {
        limits.Check();
        Milliseconds pause = kPause;
        if (m_Own && m_Own->HasEnded()) TakeEnd(limits);
        if (!m_Own && !PipeClient::IsThere(kPipeName)) StartOwn(limits);
        if (!m_Own) {
            const bool isLate = !mayUse && Clock::now() > limits.m_WaitEnd;
            if (isLate || m_Options.m_OtherHelper == OtherHelper::Fail) throw HelperError("other-helper");
        }
        const bool mayOpen = m_Own || mayUse;
        if (mayOpen && m_Pipe.TryOpen(kPipeName)) {
            const bool isOwn = m_Own && m_Own->m_Id == m_Pipe.ServerProcessId();
            if (isOwn || mayUse) {
                // Where another has been faster, ours finds the pipe taken and ends.
                if (!isOwn) m_Own.reset();
                m_WasConnected = true;
                limits.m_IsNew = false;
                return;
            }
            // Each visit makes the other stay longer.
            m_Pipe.Close();
            pause = 20 * kPause;
        }
        if (mayOpen && m_Pipe.FoundDenied()) throw HelperError("pipe-denied");
        if (m_Own && m_IsOwed && Clock::now() > limits.m_OwedEnd) m_Own->Kill();
        if (mayOpen && Clock::now() > limits.m_ConnectEnd) throw HelperError("not-connected");
        limits.Pause(m_Own.get(), pause);
    }
}

void SteamHelper::StartOwn(Limits& limits) {
    std::error_code error;
    const fs::path program = Absolute(m_Options.m_Helper);
    if (!fs::exists(program, error)) throw HelperError("helper-missing", Text(program));
    m_LogSize = SizeOf(Path(m_Log + ".log"));
    m_Own = Process::Start(program, m_Changes);
    m_IsOwed = false;
    limits.m_Restarts += m_WasConnected ? 1 : 0;
    m_Restarts += m_WasConnected ? 1 : 0;
    limits.m_IsNew = true;
    limits.m_ConnectEnd = After(m_Options.m_StartTimeout);
}

// Our helper has ended: returns where another may be started, else throws the reason.
void SteamHelper::TakeEnd(Limits& limits) {
    const HelperError reason = WhyEnded();
    const bool isNew = std::exchange(limits.m_IsNew, false);
    m_Own.reset();
    // Without a log the pipe itself tells.
    const bool isSilent = reason.Code() == "ended-without-reason";
    if (reason.Code() == "pipe-taken" || (isNew && isSilent && PipeClient::IsThere(kPipeName))) {
        if (m_Options.m_OtherHelper == OtherHelper::Fail) throw HelperError("other-helper", reason.Detail());
        if (Clock::now() > limits.m_WaitEnd) throw reason;
        return;
    }
    // Who comes early is connected to a helper whose start then fails.
    if (isNew || reason.Phase() == "start" || limits.m_Restarts >= kMostRestarts) throw reason;
}

HelperError SteamHelper::WhyEnded() const {
    const std::string detail =
        "process " + std::to_string(m_Own->m_Id) + " ended with code " + std::to_string(m_Own->ExitCode());
    const fs::path log = Path(m_Log + ".log");
    // A log that is shorter than before is a new one.
    const bool isNew = SizeOf(log) < m_LogSize;
    const std::string bytes = isNew ? ReadFrom(Path(m_Log + ".old.txt"), m_LogSize) + ReadFrom(log, 0)  //
                                    : ReadFrom(log, m_LogSize);
    const std::vector<std::string> texts = TextsOf(m_Own->m_Id, bytes);
    for (const FailureKind& kind : kFailures) {
        if (const std::string told = Told(kind, texts); !told.empty()) return HelperError(kind.m_Code, detail + told);
    }
    return HelperError("ended-without-reason", detail);
}

// One request and its answer. Unless the outcome is Done, the connection is closed. `danger` is the detail of errors.
Outcome SteamHelper::Exchange(const std::string& body, Milliseconds limit, const Limits& limits,
                              const std::string& danger, Answer& answer) {
    const Clock::time_point owed = After(limit), end = std::min(owed, limits.m_End);
    m_IsOwed = true;
    FrameReader reader;
    Outcome outcome = m_Pipe.Write(MakeFrame(body), Milliseconds{Left(end)}, limits.m_Stop);
    while (outcome == Outcome::Done) {
        if (const std::optional<Frame> frame = reader.Next(); frame || reader.IsBroken()) {
            const std::optional<Answer> parsed =
                frame && frame->m_Id == kSteamId ? ParseAnswer(frame->m_Body) : std::nullopt;
            if (!parsed || RequestIdOf(*parsed) != m_LastRequest) break;
            answer = *parsed;
            m_IsOwed = false;
            return Outcome::Done;
        }
        std::string bytes;
        outcome = m_Pipe.Read(bytes, Milliseconds{Left(end)}, limits.m_Stop);
        reader.Feed(bytes);
    }
    m_Pipe.Close();
    if (outcome == Outcome::Done) throw HelperError("bad-answer", danger);
    limits.Check(danger);
    // A wait may end a moment early; the helper isn't stuck yet.
    if (outcome == Outcome::TimedOut && limits.m_End <= owed) throw HelperError("timed-out", danger);
    return outcome;
}

InfoResponse SteamHelper::Ask(Limits& limits) {
    for (;;) {
        Connect(limits);
        Answer answer;
        const Outcome outcome = Exchange(InfoRequest(++m_LastRequest), m_Options.m_AnswerTimeout, limits, {}, answer);
        if (outcome == Outcome::Done) {
            if (const auto* const info = std::get_if<InfoResponse>(&answer)) return *info;
            m_Pipe.Close();
            throw HelperError("bad-answer");
        }
        if (outcome == Outcome::Lost) {
            if (Clock::now() > limits.m_ConnectEnd) throw HelperError("connection-lost");
            limits.Pause(m_Own.get(), kPause);
            continue;
        }
        const bool isOwn = m_Own != nullptr;
        if (isOwn) m_Own->Kill();
        m_Own.reset();
        if (!isOwn || limits.m_Restarts >= kMostRestarts) throw HelperError("no-answer");
    }
}

void SteamHelper::RequireNotStopped() const {
    if (m_Stopped) throw HelperError("stopped");
}

SteamIdentity SteamHelper::Identity(const Call& call) {
    RequireNotStopped();
    Limits limits(call, m_Options);
    const InfoResponse info = Ask(limits);
    return {info.m_SteamId, info.m_PersonaName, *ReadBytes(info.m_Ticket)};
}

Game SteamHelper::Launch(const GameStart& start, const Call& call) {
    RequireNotStopped();
    Limits limits(call, m_Options);
    Require(!start.m_Exe.empty() && IsText(start.m_Exe), "m_Exe is no path");
    Require(IsText(start.m_Directory), "m_Directory is no path");
    Require(std::all_of(start.m_Args.begin(), start.m_Args.end(), IsText), "m_Args has what no argument can hold");
    const fs::path exe = Absolute(start.m_Exe);
    const fs::path directory = start.m_Directory.empty() ? exe.parent_path() : Absolute(start.m_Directory);
    std::vector<std::string> arguments = {Text(exe)};
    arguments.insert(arguments.end(), start.m_Args.begin(), start.m_Args.end());
    const auto request = [&](std::uint64_t id) {
        return LaunchRequest(id, arguments.front(), Text(directory), CommandLine(arguments));
    };
    // With an id that is longer than the later one.
    Require(MakeFrame(request(m_LastRequest + 100)).size() <= kMaxWrite, "the request is longer than 65,536 bytes");

    Ask(limits);
    Answer answer;
    const Outcome outcome = Exchange(request(++m_LastRequest), m_Options.m_LaunchTimeout, limits, kMayRun, answer);
    if (outcome != Outcome::Done) {
        throw HelperError(outcome == Outcome::Lost ? "connection-lost" : "no-answer", kMayRun);
    }
    if (const auto* const launched = std::get_if<LaunchResponse>(&answer)) {
        return Game(Process::Open(launched->m_ProcessId));
    }
    if (!std::holds_alternative<Failure>(answer)) {
        m_Pipe.Close();
        throw HelperError("bad-answer", kMayRun);
    }
    std::error_code error;
    if (!fs::exists(exe, error)) throw HelperError("game-missing", Text(exe));
    if (!fs::is_directory(directory, error)) throw HelperError("game-directory-missing", Text(directory));
    throw HelperError(IsProgram(exe) ? "game-refused" : "game-not-a-program", Text(exe));
}

void SteamHelper::Leave() {
    RequireNotStopped();
    m_Pipe.Close();
}

void SteamHelper::Stop(const Call& call) {
    RequireNotStopped();
    m_Stopped = true;
    m_Pipe.Close();
    if (!m_Own || m_Own->HasEnded()) return;
    const Clock::time_point end = After(std::min(call.m_Timeout, kEndLimit));
    if (!m_Own->RequestClose() || m_Own->AwaitEnd(end, call.m_Stop) != Outcome::Done) m_Own->Kill();
}

}  // namespace launcher
