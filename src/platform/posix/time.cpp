#include <sys/time.h>

#include <ctime>

#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/layer_clock.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;  // of 100 ns
using Milliseconds = std::chrono::milliseconds;

// From 1 January 1601, where file times begin, to the Unix epoch.
constexpr std::chrono::seconds kFileTimeToUnix{11'644'473'600};

FILETIME ToFileTime(std::chrono::system_clock::duration sinceUnixEpoch) {
    // In 100 ns from the start: in nanoseconds the sum doesn't fit.
    const auto ticks =
        static_cast<std::uint64_t>((std::chrono::duration_cast<Ticks>(sinceUnixEpoch) + kFileTimeToUnix).count());
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void GetBrokenDownTime(tm* (*breakDown)(const time_t*, tm*), SYSTEMTIME* time) {
    const auto now = std::chrono::floor<Milliseconds>(SystemNow());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
    const time_t value = std::chrono::system_clock::to_time_t(seconds);
    tm fields = {};
    breakDown(&value, &fields);
    time->wYear = static_cast<WORD>(fields.tm_year + 1900);
    time->wMonth = static_cast<WORD>(fields.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(fields.tm_wday);
    time->wDay = static_cast<WORD>(fields.tm_mday);
    time->wHour = static_cast<WORD>(fields.tm_hour);
    time->wMinute = static_cast<WORD>(fields.tm_min);
    time->wSecond = static_cast<WORD>(fields.tm_sec);
    time->wMilliseconds = static_cast<WORD>((now - seconds).count());
}

}  // namespace

void GetLocalTime(SYSTEMTIME* time) {
    GetBrokenDownTime(localtime_r, time);
}

void GetSystemTime(SYSTEMTIME* time) {
    GetBrokenDownTime(gmtime_r, time);
}

void GetSystemTimeAsFileTime(FILETIME* time) {
    *time = ToFileTime(SystemNow().time_since_epoch());
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime) {
    if (Faulted(__func__)) return FALSE;
    const std::chrono::year_month_day date(std::chrono::year(time->wYear), std::chrono::month(time->wMonth),
                                           std::chrono::day(time->wDay));
    if (time->wYear < 1601 || !date.ok() || time->wHour > 23 || time->wMinute > 59 || time->wSecond > 59 ||
        time->wMilliseconds > 999)
        return WithLastError(ERROR_INVALID_PARAMETER, FALSE);
    // In 100 ns from the start: in nanoseconds the range of years would be too small.
    const auto ticks = Ticks(std::chrono::sys_days(date).time_since_epoch()) + kFileTimeToUnix +
                       std::chrono::hours(time->wHour) + std::chrono::minutes(time->wMinute) +
                       std::chrono::seconds(time->wSecond) + Milliseconds(time->wMilliseconds);
    const auto count = static_cast<std::uint64_t>(Ticks(ticks).count());
    *fileTime = {static_cast<DWORD>(count), static_cast<DWORD>(count >> 32)};
    return TRUE;
}

DWORD timeGetTime() {
    return static_cast<DWORD>(std::chrono::floor<Milliseconds>(SteadyNow().time_since_epoch()).count());
}
