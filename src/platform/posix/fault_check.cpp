#include "platform/posix/fault_check.h"

#include <atomic>
#include <cstdlib>
#include <deque>
#include <map>
#include <mutex>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>

#include "platform/no_destructor.h"
#include "platform/posix/environment.h"
#include "platform/posix/testing/faults.h"
#include "platform/posix/windows_calls.h"

namespace posix_layer {

namespace {

struct Fault {
    DWORD code;
    int skip;
    std::function<void()> action;  // if there is one, it runs, and the call doesn't fail
};

class FaultTable {
  public:
    // NAME:CODE or NAME:CODE:SKIP, separated by commas.
    FaultTable() {
        std::istringstream entries(GetVariable("TOLLMERE_TEST_FAULTS").value_or(""));
        std::string entry;
        while (std::getline(entries, entry, ',')) {
            std::istringstream fields(entry);
            std::string name, code, skip;
            std::getline(fields, name, ':');
            std::getline(fields, code, ':');
            std::getline(fields, skip, ':');
            Add(name, {static_cast<DWORD>(std::strtoul(code.c_str(), nullptr, 0)), std::atoi(skip.c_str()), nullptr});
        }
    }

    void Add(const std::string& name, Fault fault) {
        const std::lock_guard lock(m_Lock);
        m_Faults[name].push_back(std::move(fault));
        m_Empty = false;
    }

    std::optional<Fault> Take(const char* name) {
        if (m_Empty) return std::nullopt;
        const std::lock_guard lock(m_Lock);
        const auto found = m_Faults.find(name);
        if (found == m_Faults.end()) return std::nullopt;
        std::deque<Fault>& queue = found->second;
        if (queue.front().skip-- > 0) return std::nullopt;
        Fault fault = std::move(queue.front());
        queue.pop_front();
        if (queue.empty()) m_Faults.erase(found);
        m_Empty = m_Faults.empty();
        return fault;
    }

    int Count() {
        const std::lock_guard lock(m_Lock);
        return std::accumulate(m_Faults.begin(), m_Faults.end(), 0,
                               [](int sum, const auto& entry) { return sum + static_cast<int>(entry.second.size()); });
    }

    void Clear() {
        const std::lock_guard lock(m_Lock);
        m_Faults.clear();
        m_Empty = true;
    }

  private:
    std::atomic<bool> m_Empty = true;  // spares the calls the lock while there are no faults
    std::mutex m_Lock;
    std::map<std::string, std::deque<Fault>, std::less<>> m_Faults;
};

FaultTable& Faults() {
    static NoDestructor<FaultTable> table;
    return *table;
}

}  // namespace

std::optional<DWORD> TakeFault(const char* name) {
    const std::optional<Fault> fault = Faults().Take(name);
    if (!fault) return std::nullopt;
    if (fault->action == nullptr) return fault->code;
    fault->action();
    return std::nullopt;
}

bool Faulted(const char* name) {
    const std::optional<DWORD> code = TakeFault(name);
    if (code) SetLastError(*code);
    return code.has_value();
}

}  // namespace posix_layer

namespace platform_testing {

void FailCall(const char* name, DWORD code, int skip) {
    posix_layer::Faults().Add(name, {code, skip, nullptr});
}

void RunBefore(const char* name, std::function<void()> action) {
    posix_layer::Faults().Add(name, {ERROR_SUCCESS, 0, std::move(action)});
}

int PendingFaultCount() {
    return posix_layer::Faults().Count();
}

void ClearFaults() {
    posix_layer::Faults().Clear();
}

}  // namespace platform_testing
