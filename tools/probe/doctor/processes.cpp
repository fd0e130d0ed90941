#include "tools/probe/doctor/processes.h"

bool IsHelperName(const std::string& name) {
    // Of a helper whose file has been replaced it may go on.
    return name.starts_with("tollmere_steam_helper");
}

std::string Describe(const ProcessLook& process) {
    std::string text = "process " + std::to_string(process.m_Id);
    if (!process.m_Name.empty()) text += " (" + process.m_Name + ")";
    switch (process.m_Relation) {
        case Relation::Equal:
            return text + " of this user";
        case Relation::OtherRights:
            return text + " of this user, with other rights (as administrator or not)";
        case Relation::OtherUser:
            break;
    }
    return text + " of another user, or with more rights";
}
