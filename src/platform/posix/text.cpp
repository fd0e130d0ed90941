#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/environment.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

struct ErrorText {
    DWORD code;
    const char* text;
};

// Of the failures that are met now and then. The log tells the number of any.
constexpr ErrorText kErrorTexts[] = {
    {ERROR_FILE_NOT_FOUND, "There is no such file."},         {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_NOT_ENOUGH_MEMORY, "There is not enough memory."}, {ERROR_BROKEN_PIPE, "The pipe has been ended."},
    {ERROR_PIPE_BUSY, "The pipe serves somebody else."},
};

// Windows' rule for conversions: `size` 0 asks for the size that `text` needs with its terminator.
template <class Character>
int CopyConverted(const std::basic_string<Character>& text, Character* buffer, int size) {
    const int needed = static_cast<int>(text.size() + 1);
    if (size == 0) return needed;
    if (size < needed) return WithLastError(ERROR_INSUFFICIENT_BUFFER, 0);
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return needed;
}

}  // namespace

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, char* narrow, int narrowSize,
                        const char* defaultChar, BOOL* usedDefaultChar) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    if (codePage != CP_UTF8 || flags != 0 || wideCount != -1 || defaultChar != nullptr || usedDefaultChar != nullptr)
        return WithLastError(ERROR_INVALID_PARAMETER, 0);
    return CopyConverted(ToUtf8(wide), narrow, narrowSize);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowCount, LPWSTR wide, int wideSize) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    if (codePage != CP_UTF8 || flags != 0 || narrowCount != -1) return WithLastError(ERROR_INVALID_PARAMETER, 0);
    return CopyConverted(ToWide(narrow), wide, wideSize);
}

DWORD FormatMessageA(DWORD flags, const void*, DWORD code, DWORD, char* buffer, DWORD size, void*) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    if (flags != (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS))
        return WithLastError(ERROR_INVALID_PARAMETER, DWORD{0});
    const auto known = [code](const ErrorText& entry) { return entry.code == code; };
    const auto* const found = std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts), known);
    if (found == std::end(kErrorTexts)) return WithLastError(ERROR_MR_MID_NOT_FOUND, DWORD{0});
    return static_cast<DWORD>(std::snprintf(buffer, size, "%s\r\n", found->text));
}

void OutputDebugStringW(LPCWSTR text) {
    const SystemAllocations scope;
    static const bool isWanted = GetVariable("TOLLMERE_DEBUG_OUTPUT") == "1";
    if (isWanted) std::fputs(ToUtf8(text).c_str(), stderr);
}
