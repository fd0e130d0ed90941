#include "telemetry/text_file.h"

#include <string>

#include "platform/owners.h"

static OwnedFile Open(const WideString& path, DWORD access, DWORD disposition) {
    return OwnedFile(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool ReadTextFile(const WideString& path, WideString& text) {
    const OwnedFile file = Open(path, GENERIC_READ, OPEN_EXISTING);
    if (!file) return false;
    WideString read;
    unsigned char block[4096];
    DWORD count = 0;
    do {
        if (!ReadFile(file.Get(), block, sizeof block, &count, nullptr)) return false;
        read.append(block, block + count);
    } while (count != 0);
    text = std::move(read);
    return true;
}

bool WriteTextFile(const WideString& path, const WideString& text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const WCHAR unit : text) {
        const bool isSecondOfPair = (unit & 0xFC00) == 0xDC00;
        if (!isSecondOfPair) bytes += unit <= 0xFF ? static_cast<char>(unit) : '?';
    }
    const OwnedFile file = Open(path, GENERIC_WRITE, CREATE_ALWAYS);
    if (!file) return false;
    DWORD written = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return true;
}
