#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "diagnostics/text.h"
#include "tests/support/limits.h"

namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

TEST(TextContract, WhatIsNoUtf8IsReplaced) {
    struct {
        const char* bytes;
        const char* pattern;  // what comes out of it, with ? for each replacement
    } const rows[] = {
        {"", ""},
        {"z\xC3\xBC\xE6\xB0\xB4\xF0\x9F\x8E\xAE", "z\xC3\xBC\xE6\xB0\xB4\xF0\x9F\x8E\xAE"},
        {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", "\xEF\xBF\xBF\xF4\x8F\xBF\xBF"},
        {"a\x80z", "a?z"},
        {"a\xBF\xBFz", "a??z"},
        {"a\xFFz\xFE", "a?z?"},
        {"a\xC3", "a?"},
        {"a\xC3z", "a?z"},
        {"a\xC0\xAFz", "a??z"},                 // an overlong slash
        {"a\xE6\xB0z", "a?z"},                  // cut before the last byte
        {"a\xF0\x9F\x8Ez", "a?z"},              // cut before the last byte
        {"a\xF0\x9F\xC3\xBCz", "a?\xC3\xBCz"},  // cut by the next character
        {"a\xF8\x88\x80\x80z", "a????z"},
    };
    for (const auto& row : rows) {
        std::string expected;
        for (const char c : std::string(row.pattern)) expected += c == '?' ? kReplacement : std::string(1, c);
        EXPECT_EQ(WideToUtf8(Utf8ToWide(row.bytes).c_str()), expected) << row.pattern;
    }
}

TEST(TextContract, AnUnpairedSurrogateIsReplaced) {
    const WCHAR high = 0xD83C, low = 0xDFAE;
    const std::pair<WideString, std::string> rows[] = {
        {{'a', high, low, 'z'}, "a\xF0\x9F\x8E\xAEz"},
        {{'a', high, 'z'}, "a" + kReplacement + "z"},
        {{'a', low, 'z'}, "a" + kReplacement + "z"},
        {{low, high}, kReplacement + kReplacement},
        {{high, high, low}, kReplacement + "\xF0\x9F\x8E\xAE"},
    };
    for (const auto& [wide, narrow] : rows) EXPECT_EQ(WideToUtf8(wide.c_str()), narrow);
}

TEST(TextContract, TheSizeIsAskedForAndKept) {
    const WCHAR wide[] = {'a', 0xFC, 0};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr), 4);
    char narrow[4];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 4, nullptr, nullptr), 4);
    EXPECT_STREQ(narrow, "a\xC3\xBC");

    WCHAR back[3];
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, narrow, -1, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, narrow, -1, back, 2), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, narrow, -1, back, 3), 3);
    EXPECT_EQ(WideString(back), WideString(wide));
}

TEST(TextContract, CodesHaveTextsWithALineEnd) {
    const auto format = [](DWORD code, char* buffer, DWORD size) {
        return FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0x400, buffer,
                              size, nullptr);
    };
    char buffer[1024];
    for (const DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_BROKEN_PIPE, ERROR_PIPE_BUSY}) {
        const DWORD length = format(code, buffer, sizeof buffer);
        ASSERT_GT(length, 2u) << code;
        EXPECT_EQ(std::strlen(buffer), length);
        EXPECT_STREQ(buffer + length - 2, "\r\n");
    }
    EXPECT_EQ(format(0x2FFFFFFF, buffer, sizeof buffer), 0u);
    EXPECT_EQ(GetLastError(), 317u);
}

TEST(LastErrorContract, EachThreadHasItsOwn) {
    // No call in between: most of them change it.
    std::atomic<bool> set = false, seen = false;
    std::thread other([&] {
        SetLastError(6);
        set = true;
        while (!seen) {
        }
        EXPECT_EQ(GetLastError(), 6u);
    });
    EXPECT_TRUE(test_support::WaitUntil([&] { return set.load(); }));
    SetLastError(5);
    seen = true;
    EXPECT_EQ(GetLastError(), 5u);
    other.join();
}

TEST(TimeContract, SystemTimesBecomeFileTimes) {
    const SYSTEMTIME unixEpoch = {1970, 1, 4, 1, 0, 0, 0, 1};
    FILETIME time = {};
    ASSERT_TRUE(SystemTimeToFileTime(&unixEpoch, &time));
    EXPECT_EQ(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime, 116'444'736'000'010'000u);
    const SYSTEMTIME noHour = {2023, 2, 0, 1, 24, 0, 0, 0};
    EXPECT_FALSE(SystemTimeToFileTime(&noHour, &time));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(SecurityContract, AGrantIsOneEntryOfTheList) {
    BYTE sid[SECURITY_MAX_SID_SIZE] = {};
    DWORD size = 1;
    EXPECT_FALSE(CreateWellKnownSid(WinAuthenticatedUserSid, nullptr, sid, &size));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    ASSERT_EQ(size, 12u);
    ASSERT_TRUE(CreateWellKnownSid(WinAuthenticatedUserSid, nullptr, sid, &size));
    const BYTE expectedSid[] = {1, 1, 0, 0, 0, 0, 0, 5, 11, 0, 0, 0};
    EXPECT_EQ(std::memcmp(sid, expectedSid, sizeof expectedSid), 0);

    EXPLICIT_ACCESS_W entry = {};
    entry.grfAccessPermissions = GENERIC_READ | GENERIC_WRITE;
    entry.grfAccessMode = GRANT_ACCESS;
    entry.grfInheritance = NO_INHERITANCE;
    BuildTrusteeWithSidW(&entry.Trustee, sid);
    PACL acl = nullptr;
    ASSERT_EQ(SetEntriesInAclW(1, &entry, nullptr, &acl), DWORD{ERROR_SUCCESS});
    const auto* const bytes = reinterpret_cast<const BYTE*>(acl);
    EXPECT_EQ(bytes[4], 1) << "one entry";
    EXPECT_EQ(bytes[8], 0) << "it allows";
    EXPECT_EQ(std::memcmp(bytes + 16, sid, size), 0);
    DWORD mask = 0;
    std::memcpy(&mask, bytes + 12, sizeof mask);
    EXPECT_EQ(mask, DWORD{GENERIC_READ | GENERIC_WRITE});

    SECURITY_DESCRIPTOR descriptor = {};
    EXPECT_FALSE(SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE)) << "not initialised";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});
    EXPECT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE));
    EXPECT_EQ(descriptor.Dacl, acl);
    EXPECT_EQ(LocalFree(acl), nullptr);
}

}  // namespace
