// Drives the C++ client: driver SCRIPT. driver.js says what is in the script and in the report.

#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "clients/cpp/tollmere_launcher_client.h"
#include "support/limits.h"
#include "support/system.h"
#include "support/temp_folder.h"
#include "tests/e2e/machine.h"

namespace {

namespace fs = std::filesystem;
using launcher::Milliseconds;
using nlohmann::json;

class Driver {
  public:
    explicit Driver(json script) : m_Script(std::move(script)) {}

    void Run() {
        int number = 0;
        for (const json& step : m_Script["steps"]) {
            json line = {{"step", number++}, {"call", step["call"]}, {"restarts", 0}, {"milliseconds", 0}};
            for (int times = step.value("repeat", 1); times > 0; --times) Repeat(step, line);
            if (line.contains("error")) line.erase("ok");
            support::AppendToFile(m_Script["report"], line.dump() + "\n");
        }
    }

  private:
    void Repeat(const json& step, json& line) {
        const bool isStart = step["call"].get<std::string>().starts_with("start");
        const int restarts = m_Client && !isStart ? m_Client->Restarts() : 0;
        const auto begin = std::chrono::steady_clock::now();
        const json result = Once(step);
        const auto time = std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - begin).count();
        if (!line.contains("error")) line.update(result);
        if (m_Client && !isStart) line["restarts"] = line["restarts"].get<int>() + m_Client->Restarts() - restarts;
        line["milliseconds"] = std::max<long long>(line["milliseconds"].get<long long>(), time);
    }

    json Once(const json& step) {
        std::stop_source source;
        std::jthread canceler;
        if (step.contains("cancelAfter")) {
            canceler = std::jthread([source, time = Milliseconds{step["cancelAfter"]}]() mutable {
                std::this_thread::sleep_for(time);
                source.request_stop();
            });
        }
        launcher::Call call;
        if (step.contains("timeout")) call.m_Timeout = Milliseconds{step["timeout"]};
        call.m_Stop = source.get_token();
        try {
            const json result = Do(step, call);
            return {{"ok", result.is_null() ? json::object() : result}};
        } catch (const launcher::HelperError& error) {
            return {{"error",
                     {{"code", error.Code()},
                      {"text", error.Text()},
                      {"advice", error.Advice()},
                      {"detail", error.Detail()}}}};
        } catch (const std::exception& error) {
            return {{"error", {{"code", "no error of the client"}, {"detail", error.what()}}}};
        }
    }

    json Do(const json& step, const launcher::Call& call) {
        const std::string name = step["call"];
        if (name.starts_with("start")) return Start(call);
        if (name == "await") {
            while (!fs::exists(support::FromUtf8(step["file"]))) std::this_thread::sleep_for(Milliseconds{10});
            return {};
        }
        if (!m_Client) throw std::logic_error("it wasn't started");
        if (name == "identity") return Identity(m_Client->Identity(call));
        if (name == "leave") m_Client->Leave();
        if (name == "stop") m_Client->Stop(call);
        if (name == "ended") m_Game.value().Ended(call);
        if (name == "killHelper") Kill(m_Client->HelperProcessId(), Milliseconds{step.value("afterMilliseconds", 0)});
        if (name != "launch") return {};
        m_Game = m_Client->Launch({.m_Exe = step["exe"],
                                   .m_Directory = step.value("directory", ""),
                                   .m_Args = step.value("args", std::vector<std::string>())},
                                  call);
        return {{"processId", m_Game->ProcessId()}};
    }

    json Start(const launcher::Call& call) {
        const json& options = m_Script["options"];
        const std::map<std::string, launcher::OtherHelper> kChoices = {{"wait", launcher::OtherHelper::Wait},
                                                                       {"use", launcher::OtherHelper::Use},
                                                                       {"fail", launcher::OtherHelper::Fail}};
        launcher::StartOptions start;
        const auto time = [&](const char* name, Milliseconds usual) {
            return Milliseconds{options.value(name, usual.count())};
        };
        start.m_Helper = options["helper"];
        start.m_AppId = options["appId"];
        start.m_Directory = options.value("directory", "");
        start.m_OtherHelper = kChoices.at(options.value("otherHelper", "wait"));
        start.m_AnswerTimeout = time("answerTimeout", start.m_AnswerTimeout);
        start.m_StartTimeout = time("startTimeout", start.m_StartTimeout);
        start.m_WaitTimeout = time("waitTimeout", start.m_WaitTimeout);
        start.m_Environment = options.value("environment", start.m_Environment);
        m_Client.reset();
        m_Client = launcher::SteamHelper::Start(start, call);
        return {{"helperProcessId", m_Client->HelperProcessId()}};
    }

    static json Identity(const launcher::SteamIdentity& identity) {
        std::string ticket;
        for (const std::uint8_t byte : identity.m_Ticket) {
            for (const int digit : {byte >> 4, byte & 15}) ticket += "0123456789ABCDEF"[digit];
        }
        return {{"steamId", std::to_string(identity.m_SteamId)}, {"name", identity.m_Name}, {"ticket", ticket}};
    }

    // At once, or while the next step runs.
    void Kill(std::uint32_t helper, Milliseconds after) {
        m_Killer = std::jthread([helper, after] {
            std::this_thread::sleep_for(after);
            if (helper != 0) e2e::EndProcess(helper);
        });
        if (after.count() == 0) m_Killer.join();
    }

    json m_Script;
    std::optional<launcher::SteamHelper> m_Client;
    std::optional<launcher::Game> m_Game;
    std::jthread m_Killer;
};

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = support::Arguments(argc, argv);
    Driver(json::parse(support::ReadAll(support::FromUtf8(arguments.at(1))))).Run();
}
