#include "tools/probe/doctor/check.h"

#include "tools/probe/failures.h"

Check Healthy(const std::string& name, const std::string& detail) {
    return {name, true, "", "ok", "", detail};
}

Check Failing(const std::string& name, const std::string& code, const std::string& detail) {
    const Failure& failure = FailureOf(code);
    return {name, false, code, failure.m_Text, failure.m_Advice, detail};
}

Check Wrong(const std::string& name, const std::string& text, const std::string& advice, const std::string& detail) {
    return {name, false, "", text, advice, detail};
}
