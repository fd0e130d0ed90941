#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "platform/posix/environment.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

struct ErrorText {
    DWORD code;
    const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {ERROR_SUCCESS, "The operation was completed."},
    {ERROR_FILE_NOT_FOUND, "There is no such file."},
    {ERROR_PATH_NOT_FOUND, "There is no such folder."},
    {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_INVALID_HANDLE, "The handle is not valid."},
    {ERROR_NOT_ENOUGH_MEMORY, "There is not enough memory."},
    {ERROR_NO_MORE_FILES, "There are no more entries."},
    {ERROR_BAD_LENGTH, "The length of the record is wrong."},
    {ERROR_GEN_FAILURE, "The system refused the operation."},
    {ERROR_SHARING_VIOLATION, "The file is in use."},
    {ERROR_INVALID_PARAMETER, "A parameter is wrong."},
    {ERROR_BROKEN_PIPE, "The pipe has been ended."},
    {ERROR_DISK_FULL, "The disk is full."},
    {ERROR_INSUFFICIENT_BUFFER, "The buffer is too small."},
    {ERROR_INVALID_NAME, "The name is not valid."},
    {ERROR_MOD_NOT_FOUND, "The module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The procedure could not be found."},
    {ERROR_ALREADY_EXISTS, "The file exists already."},
    {ERROR_BAD_EXE_FORMAT, "The file is not a program."},
    {ERROR_ENVVAR_NOT_FOUND, "There is no such environment variable."},
    {ERROR_PIPE_BUSY, "The pipe serves somebody else."},
    {ERROR_NO_DATA, "The pipe is being closed."},
    {ERROR_PIPE_NOT_CONNECTED, "There is no process on the other end of the pipe."},
    {ERROR_MORE_DATA, "There is more data."},
    {ERROR_DIRECTORY, "The directory name is not valid."},
    {ERROR_MR_MID_NOT_FOUND, "There is no text for this code."},
    {ERROR_PIPE_CONNECTED, "There is a process on the other end of the pipe."},
    {ERROR_PIPE_LISTENING, "The pipe waits for a process to open the other end."},
    {ERROR_OPERATION_ABORTED, "The operation was cancelled."},
    {ERROR_IO_INCOMPLETE, "The operation is not complete."},
    {ERROR_IO_PENDING, "The operation is under way."},
    {ERROR_NO_TOKEN, "The thread has no token."},
    {ERROR_UNKNOWN_REVISION, "The revision is unknown."},
    {ERROR_INVALID_WINDOW_HANDLE, "The window handle is not valid."},
    {ERROR_CANNOT_FIND_WND_CLASS, "There is no such window class."},
    {ERROR_CLASS_ALREADY_EXISTS, "The window class exists already."},
    {ERROR_INVALID_INDEX, "The index is not valid."},
};

// Windows' rule for conversions: `size` 0 asks for the size that `text` needs with its terminator.
template <class Character>
int CopyConverted(const std::basic_string<Character>& text, Character* buffer, int size) {
    const int needed = static_cast<int>(text.size() + 1);
    if (size == 0) return needed;
    if (size < needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return needed;
}

}  // namespace

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, char* narrow, int narrowSize,
                        const char* defaultChar, BOOL* usedDefaultChar) {
    if (Faulted(__func__)) return 0;
    if (codePage != CP_UTF8 || flags != 0 || wideCount != -1 || defaultChar != nullptr || usedDefaultChar != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return CopyConverted(ToUtf8(wide), narrow, narrowSize);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowCount, LPWSTR wide, int wideSize) {
    if (Faulted(__func__)) return 0;
    if (codePage != CP_UTF8 || flags != 0 || narrowCount != -1) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return CopyConverted(ToWide(narrow), wide, wideSize);
}

DWORD FormatMessageA(DWORD flags, const void*, DWORD code, DWORD, char* buffer, DWORD size, void*) {
    if (Faulted(__func__)) return 0;
    if (flags != (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const auto known = [code](const ErrorText& entry) { return entry.code == code; };
    const auto* const found = std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts), known);
    if (found == std::end(kErrorTexts)) {
        SetLastError(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    const std::string text = std::string(found->text) + "\r\n";
    if (text.size() >= size) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<DWORD>(text.size());
}

static std::FILE* OpenDebugOutput() {
    const std::optional<std::string> where = GetVariable("TOLLMERE_DEBUG_OUTPUT");
    if (!where) return nullptr;
    return *where == "1" ? stderr : std::fopen(where->c_str(), "a");
}

void OutputDebugStringW(LPCWSTR text) {
    static std::FILE* const output = OpenDebugOutput();
    if (output == nullptr) return;
    std::fputs(ToUtf8(text).c_str(), output);
    std::fflush(output);
}
