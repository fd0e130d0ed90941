#include "diagnostics/text.h"

#include <cstdarg>
#include <cstdio>

std::string WideToUtf8(const WCHAR* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    // The platform counts the terminator; the string has one of its own. A refused call leaves nothing to cut.
    if (!narrow.empty()) narrow.pop_back();
    return narrow;
}

WideString Utf8ToWide(const char* text) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    WideString wide(static_cast<std::size_t>(size), WCHAR{});
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), size);
    if (!wide.empty()) wide.pop_back();
    return wide;
}

static int FormatArguments(char* buffer, std::size_t size, const char* format, va_list arguments) {
    const int length = std::vsnprintf(buffer, size, format, arguments);
    return length < 0 || static_cast<std::size_t>(length) >= size ? -1 : length;
}

int FormatText(char* buffer, std::size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatArguments(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

int FormatText16(char (&buffer)[16], const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatArguments(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return length;
}

int FormatText32(char (&buffer)[32], const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatArguments(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return length;
}

int ScanText(const char* text, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int fields = std::vsscanf(text, format, arguments);
    va_end(arguments);
    return fields < 0 ? 0 : fields;
}
