// Each way to fail of failures.json, produced for real: the call ends with that code, text and advice.

#include <fstream>
#include <set>

#include "pipe/named_pipe_server.h"
#include "support/limits.h"
#include "tests/clients/clients_fixture.h"

namespace clients {

namespace {

namespace fs = std::filesystem;

const Steps kStart = {{{"call", "start"}}};
const Steps kAsk = {{{"call", "start"}}, {{"call", "identity"}}};

// Holds the helper's pipe in this process and answers each request by a body, or not at all.
class Impostor {
  public:
    using Answers = std::function<std::string(const std::string& request)>;

    explicit Impostor(const Answers& answers) {
        m_Callbacks.OnData = [answers](unsigned char* data, unsigned int size) {
            launcher::FrameReader reader;
            reader.Feed({reinterpret_cast<const char*>(data), size});
            const std::string body = answers(reader.Next().value_or(launcher::Frame{}).m_Body);
            OutgoingFrame frame = MakeFrame("STEA", body.c_str());
            if (!body.empty()) NamedPipeServer::Send(frame);
        };
        EXPECT_TRUE(NamedPipeServer::Create("\\\\.\\pipe\\TollmereSteamHelper", &m_Callbacks));
    }
    ~Impostor() {
        NamedPipeServer::StopDeliveries();
        NamedPipeServer::Destroy();
    }

  private:
    PipeCallbacks m_Callbacks;
};

class Failures;

struct Failing {
    const char* m_Code;
    Steps m_Steps;
    std::function<void(Failures&)> m_Prepare = [](Failures&) {};
    bool m_NativeOnly = false;

    friend void PrintTo(const Failing& failing, std::ostream* to) { *to << failing.m_Code; }
};

class Failures : public ClientFixture, public testing::WithParamInterface<std::tuple<std::string, Failing>> {
  protected:
    std::string Driver() const override { return std::get<0>(GetParam()); }

  public:  // for the rows
    using ClientFixture::options;
    using ClientFixture::variables;
    using ClientFixture::wrapper;
    using HelperFixture::Helper;
    using HelperFixture::LetPass;
    using HelperFixture::LogFile;
    using HelperFixture::UseStandIn;

    // The path of what is in the helper's folder.
    std::string Place(const std::string& name) const { return support::ToUtf8(Home() / name); }
    std::string File(const std::string& name, const std::string& text, bool isProgram = true) const {
        std::ofstream(Home() / name, std::ios::binary) << text;
        fs::permissions(Home() / name, isProgram ? fs::perms::owner_all : fs::perms::owner_read);
        return Place(name);
    }
    // Another's helper runs.
    void StartOther(bool isBusy = true) {
        StartService();
        if (isBusy) Connect();
    }
    void Pretend(const Impostor::Answers& answers) {
        impostor = std::make_unique<Impostor>(answers);
        options["otherHelper"] = "use";
    }
    // Nobody finds the helper's pipe. As soon as it is there the shell's command runs, to which $$ is the helper.
    void Hide(const std::string& command) {
        options["environment"]["TOLLMERE_PIPE_DIR"] = HomeText();
        const std::string helper = options["helper"];
        const std::string whenUp =
            "until grep -q RunCallbacks \"$STEAM_STAND_IN_RECORD\"; do kill -0 $$ || exit; done\n" + command;
        options["helper"] = File("hidden", "#!/bin/sh\n(" + whenUp + ") &\nexec '" + helper + "'\n");
    }
    // The helper runs out of memory at its first allocation that ends it with this code.
    void Starve(int code) {
        variables["STEAM_STAND_IN_INIT"] = "fail";
        for (int allocation = 1, ended = 0; ended != code || Log().empty(); ++allocation) {
            fs::remove(LogFile());
            variables["TOLLMERE_TEST_FAIL_ALLOCATION"] = std::to_string(allocation);
            Start();
            ended = Helper().WaitForExit().value_or(0);
        }
    }

    std::unique_ptr<Impostor> impostor;
    std::function<void()> meanwhile = [] {};
};

Steps Launch(const std::string& exe, const std::string& directory) {
    return {{{"call", "start"}}, {{"call", "launch"}, {"exe", exe}, {"directory", directory}}};
}

constexpr bool kNativeOnly = true;
const char kFaults[] = "TOLLMERE_TEST_FAULTS";

// A path that begins with `./` is in the helper's folder.
const Failing kFailing[] = {
    {"no-app-id", kStart, [](auto& test) { test.variables[kFaults] = "GetEnvironmentVariableA:203"; }, kNativeOnly},
    {"no-steam-library", kStart, [](auto& test) { test.UseStandIn(""); }},
    {"wrong-steam-library", kStart,
     [](auto& test) { test.UseStandIn("stand_in_variants/steam_api64_without_SteamClient.dll"); }},
    {"steam-without-interface", kStart, [](auto& test) { test.variables["STEAM_STAND_IN_NULL"] = "SteamUser"; }},
    {"steam-refuses", kStart, [](auto& test) { test.variables["STEAM_STAND_IN_INIT"] = "fail"; }},
    {"steam-refuses-no-directory", kStart,
     [](auto& test) {
         test.variables["STEAM_STAND_IN_INIT"] = "fail";
         test.options["directory"] = test.Place("missing");
     }},
    {"pipe-taken", kStart,
     [](auto& test) {
         test.variables[kFaults] = "CreateNamedPipeA:231";
         test.options["waitTimeout"] = 100;
     },
     kNativeOnly},
    {"pipe-not-created", kStart, [](auto& test) { test.variables[kFaults] = "CreateNamedPipeA:5"; }, kNativeOnly},
    // Who comes early is connected for a moment.
    {"pipe-not-listening", kAsk, [](auto& test) { test.variables[kFaults] = "ConnectNamedPipe:8"; }, kNativeOnly},
    {"no-window", kStart, [](auto& test) { test.variables[kFaults] = "CreateWindowExW:8"; }, kNativeOnly},
    {"no-worker", kStart, [](auto& test) { test.Starve(1); }, kNativeOnly},
    {"out-of-memory", kStart, [](auto& test) { test.Starve(3); }, kNativeOnly},
    {"nobody-came", kStart,
     [](auto& test) {
         test.Hide("");
         test.meanwhile = [&test] { test.LetPass(std::chrono::seconds{20}); };
     },
     kNativeOnly},
    {"closed-from-outside", kStart, [](auto& test) { test.Hide("kill -TERM $$"); }, kNativeOnly},
    {"ended-without-reason", kStart,
     [](auto& test) {
         test.UseStandIn("");
         fs::remove_all(test.LogFile().parent_path());
     }},
    {"helper-missing", kStart, [](auto& test) { test.options["helper"] = test.Place("missing"); }},
    {"helper-not-started", kStart, [](auto& test) { test.options["helper"] = test.File("no.exe", "text", false); }},
    {"other-helper", kStart,
     [](auto& test) {
         test.StartOther();
         test.options["otherHelper"] = "fail";
     }},
    {"pipe-denied", kStart,
     [](auto& test) {
         test.StartOther(false);
         test.options["otherHelper"] = "use";
         fs::permissions(*test.variables["TOLLMERE_PIPE_DIR"] + "/TollmereSteamHelper", fs::perms::none);
         // An administrator may do what he is denied, unless he gives up that right.
         test.wrapper = {"/bin/sh", "-c",
                         R"([ $(id -u) != 0 ] || set setpriv --bounding-set=-all --inh-caps=-all "$@"; exec "$@")",
                         "sh"};
     },
     kNativeOnly},
    {"not-connected", kStart,
     [](auto& test) {
         test.StartOther();
         test.options.update({{"otherHelper", "use"}, {"startTimeout", 300}});
     }},
    {"no-answer", kAsk,
     [](auto& test) {
         test.Pretend([](const std::string&) { return ""; });
         test.options["answerTimeout"] = 300;
     }},
    {"connection-lost", Launch("./x", "."),
     [](auto& test) {
         const auto isLaunch = std::make_shared<std::atomic<bool>>();
         test.Pretend([isLaunch](const std::string& request) {
             if (request.starts_with("launch_request:")) *isLaunch = true;
             return *isLaunch ? "" : "info_response:" + request.substr(request.find(':') + 1) + ":1:Ada:0:";
         });
         test.meanwhile = [&test, isLaunch] {
             if (*isLaunch) test.impostor.reset();
         };
     }},
    {"bad-answer", kAsk, [](auto& test) { test.Pretend([](const std::string&) { return "something:1"; }); }},
    {"game-missing", Launch("./missing", ".")},
    {"game-directory-missing", Launch("./" + e2e::ProgramFile("tollmere_steam_helper"), "./missing")},
    {"game-not-a-program", Launch("./text", "."), [](auto& test) { test.File("text", "text", false); }},
    {"game-refused", Launch("./damaged", "."), [](auto& test) { test.File("damaged", "MZ and no more"); }},
    {"bad-argument", kStart, [](auto& test) { test.options["appId"] = 0; }},
    // While another's launcher is there a start waits, however fast this machine is.
    {"timed-out", {{{"call", "start"}, {"timeout", 1}}}, [](auto& test) { test.StartOther(); }},
    {"canceled", {{{"call", "start"}, {"cancelAfter", 1}}}, [](auto& test) { test.StartOther(); }},
    {"stopped", {{{"call", "start"}}, {{"call", "stop"}}, {{"call", "identity"}}}},
};

json FailuresFile() {
    const fs::path file = e2e::BinFolder() / "clients" / "failures.json";
    return json::parse(support::ReadAll(file)).at("failures");
}

std::vector<Failing> Producible() {
    std::vector<Failing> rows(std::begin(kFailing), std::end(kFailing));
    if (!e2e::kFaultsWork) std::erase_if(rows, [](const Failing& row) { return row.m_NativeOnly; });
    return rows;
}

TEST_P(Failures, EndTheCallWithWhatTheyAre) {
    const Failing& failing = std::get<1>(GetParam());
    failing.m_Prepare(*this);
    Steps steps = failing.m_Steps;
    for (json& step : steps) {
        for (const char* const name : {"exe", "directory"}) {
            if (step.contains(name)) step[name] = Place(step[name]);
        }
    }
    steps.push_back({{"call", "stop"}});
    const Report report = Finish(Drive(steps), meanwhile);
    const auto failed =
        std::find_if(report.begin(), report.end(), [](const json& line) { return line.contains("error"); });
    ASSERT_NE(failed, report.end()) << json(report);
    EXPECT_EQ(failed->at("error").at("code"), failing.m_Code) << *failed;
    for (const json& entry : FailuresFile()) {
        if (entry["code"] != failing.m_Code) continue;
        EXPECT_EQ(failed->at("error").at("text"), entry["text"]);
        EXPECT_EQ(failed->at("error").at("advice"), entry["advice"]);
    }
    EXPECT_EQ(failed->dump().find(e2e::kTicket), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(All, Failures, testing::Combine(kDrivers, testing::ValuesIn(Producible())),
                         [](const auto& row) {
                             std::string name = std::get<0>(row.param) + "_" + std::get<1>(row.param).m_Code;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(FailuresFile, HasNoEntryThatIsNotProduced) {
    std::vector<std::string> listed, produced;
    for (const json& entry : FailuresFile()) listed.push_back(entry["code"]);
    for (const Failing& failing : kFailing) produced.push_back(failing.m_Code);
    EXPECT_EQ(produced, listed);
}

}  // namespace

}  // namespace clients
