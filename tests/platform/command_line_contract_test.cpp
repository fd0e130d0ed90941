#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diagnostics/text.h"
#include "platform/error_mode.h"

namespace {

std::vector<std::string> Split(const char* line) {
    int count = 0;
    LPWSTR* const entries = CommandLineToArgvW(Utf8ToWide(line).c_str(), &count);
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i) result.push_back(WideToUtf8(entries[i]));
    EXPECT_EQ(LocalFree(entries), nullptr);
    return result;
}

TEST(CommandLineContract, SplitsAsDocumented) {
    struct {
        const char* line;
        std::vector<std::string> entries;
    } const rows[] = {
        // The program's name: no backslash protects anything in it.
        {"p  a\tb ", {"p", "a", "b"}},
        {R"("C:\My Tools\p.exe" a)", {R"(C:\My Tools\p.exe)", "a"}},
        {R"("C:\Tools\" a)", {R"(C:\Tools\)", "a"}},
        {R"(C:\Too"ls a" b)", {R"(C:\Too"ls)", R"(a b)"}},
        {" a b", {"", "a", "b"}},
        {R"("no end a)", {"no end a"}},
        // Quotes.
        {R"(p "a b" c)", {"p", "a b", "c"}},
        {R"(p a" b "c)", {"p", "a b c"}},
        {R"(p "no end a)", {"p", "no end a"}},
        {R"(p """a""")", {"p", R"("a")"}},
        {R"(p """"a b)", {"p", R"("a b)"}},
        // Backslashes, in front of a quote and elsewhere.
        {R"(p a\b\\c\)", {"p", R"(a\b\\c\)"}},
        {R"(p a\\\"b c)", {"p", R"(a\"b)", "c"}},
        {R"(p a\\\\"b c" d)", {"p", R"(a\\b c)", "d"}},
        {R"(p "a \"b\" c" d)", {"p", R"(a "b" c)", "d"}},
        {R"(p "C:\My Games\\" d)", {"p", R"(C:\My Games\)", "d"}},
        {R"(p "C:\My Games\" d)", {"p", R"(C:\My Games" d)"}},
        {"p \xC3\xBC\xF0\x9F\x8E\xAE", {"p", "\xC3\xBC\xF0\x9F\x8E\xAE"}},
    };
    for (const auto& row : rows) EXPECT_EQ(Split(row.line), row.entries) << row.line;
}

TEST(ErrorModeContract, IsPutBack) {
    DWORD before = 1;
    {
        const NoErrorDialogs scope;
        EXPECT_TRUE(SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before));
        EXPECT_EQ(before, DWORD{SEM_FAILCRITICALERRORS});
    }
    EXPECT_TRUE(SetThreadErrorMode(0, &before));
    EXPECT_EQ(before, 0u);
}

}  // namespace
