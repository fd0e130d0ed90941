#include "telemetry/text_file.h"

#include <string>

bool ReadTextFile(const WideString& path, WideString& text) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    WideString read;
    unsigned char block[4096];
    DWORD count = 0;
    bool succeeded = true;
    do {
        succeeded = ReadFile(file, block, sizeof block, &count, nullptr) != FALSE;
        if (succeeded) read.append(block, block + count);
    } while (succeeded && count != 0);
    CloseHandle(file);
    if (succeeded) text = std::move(read);
    return succeeded;
}

bool WriteTextFile(const WideString& path, const WideString& text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const WCHAR unit : text) {
        const bool isSecondOfPair = (unit & 0xFC00) == 0xDC00;
        if (!isSecondOfPair) bytes += unit <= 0xFF ? static_cast<char>(unit) : '?';
    }
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return true;
}
