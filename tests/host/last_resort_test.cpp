// What is left of a process that ends because nobody catches an exception.

#include "host/last_resort.h"

#include <gmock/gmock.h>

#include <exception>
#include <filesystem>
#include <latch>
#include <new>
#include <thread>
#include <vector>

#include "diagnostics/log.h"
#include "support/temp_folder.h"
#include "tests/support/log_capture.h"
#include "tests/support/log_text.h"

namespace {

// Where one thread gets no memory, another one soon gets none either.
void EndTogether() {
    constexpr int kThreads = 8;
    std::latch start(kThreads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
        // By `noexcept` the exception ends where the system would get it.
        threads.emplace_back([&start]() noexcept {
            start.arrive_and_wait();
            std::rethrow_exception(std::make_exception_ptr(std::bad_alloc()));
        });
    }
}

void EndWith(void (*end)()) {
    EndOnUncaughtException();
    g_LogFileName = WIDE_TEXT("last-resort-test.log");
    Log("first");
    Log("waits");
    end();
}

TEST(LastResort, AnUncaughtExceptionEndsTheProcessWithTheWaitingLines) {
    test_support::LogCapture log;
    const std::filesystem::path file = log.File().parent_path() / "last-resort-test.log";
    struct {
        void (*end)();
        const char* line;
    } const rows[] = {
        {EndTogether, "Unhandled exception (std::bad_alloc). Aborting process with code 3."},
        {std::terminate, "Unhandled exception (none). Aborting process with code 3."},
    };
    for (const auto& row : rows) {
        std::filesystem::remove(file);
        EXPECT_EXIT(EndWith(row.end), testing::ExitedWithCode(3), "");
        EXPECT_THAT(test_support::LogTexts(support::ReadAll(file)), testing::ElementsAre("first", "waits", row.line));
    }
    std::filesystem::remove(file);
}

}  // namespace
