#include "tools/probe/doctor/doctor_command.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "support/temp_folder.h"
#include "tools/probe/doctor/binaries.h"
#include "tools/probe/doctor/checks.h"
#include "tools/probe/report.h"

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

std::vector<Check> LookAtAll(const Options& options) {
    std::error_code error;
    const fs::path given = options.m_Helper ? support::FromUtf8(*options.m_Helper) : OwnFolder() / HelperName();
    const fs::path helper = fs::absolute(given, error);
    bool needsSteam = true;
    std::vector<Check> checks;
    checks.push_back(CheckProgram(helper));
    checks.push_back(CheckLibrary(helper, needsSteam));
    checks.push_back(CheckSteam(needsSteam));
    checks.push_back(CheckAppId(options));
    checks.push_back(CheckDirectory(options));
    checks.push_back(CheckLog());
    checks.push_back(CheckStore());
    checks.push_back(CheckPipe(options));
    checks.push_back(CheckLastRun());
    return checks;
}

void PrintLine(const Check& check) {
    char name[32];
    std::snprintf(name, sizeof name, "%-10s ", check.m_Name.c_str());
    if (check.m_IsOk) {
        ReportLine(name + check.m_Text + "  " + check.m_Detail);
        return;
    }
    const std::string code = check.m_Code.empty() ? "wrong" : check.m_Code;
    ReportLine(name + code + ": " + check.m_Text + " (" + check.m_Detail + ") " + check.m_Advice);
}

Json ToJson(const Check& check) {
    Json json = {{"check", check.m_Name}, {"ok", check.m_IsOk}};
    if (!check.m_Code.empty()) json["code"] = check.m_Code;
    json["text"] = check.m_Text;
    if (!check.m_Advice.empty()) json["advice"] = check.m_Advice;
    if (!check.m_Detail.empty()) json["detail"] = check.m_Detail;
    return json;
}

}  // namespace

ExitStatus RunDoctor(const Options& options) {
    const std::vector<Check> checks = LookAtAll(options);
    const bool isHealthy = std::all_of(checks.begin(), checks.end(), [](const Check& check) { return check.m_IsOk; });
    if (options.m_Json) {
        Json all = {{"ok", isHealthy}, {"checks", Json::array()}};
        for (const Check& check : checks) all["checks"].push_back(ToJson(check));
        ReportJson(all.dump(-1, ' ', false, Json::error_handler_t::replace));
    } else {
        for (const Check& check : checks) PrintLine(check);
    }
    return isHealthy ? ExitStatus::Done : ExitStatus::Failure;
}
