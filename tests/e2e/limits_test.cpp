// What is longer than the helper can use: the path of its own file, and a store that somebody else has filled.

#include <sys/resource.h>

#include <algorithm>
#include <fstream>

#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

TEST_F(HelperFixture, FromAPathThatIsCutNoLibraryIsLoaded) {
    // The path is cut within the y's, and the library is where it then would lead.
    const fs::path cut = Home() / std::string(150, 'x');
    const fs::path folder = cut / std::string(200, 'y');
    const fs::path helper = folder / ProgramFile("tollmere_steam_helper");
    fs::create_directories(folder);
    fs::copy_file(BinFolder() / "steam_api64.dll", cut / "steam_api64.dll");
    fs::copy_file(BinFolder() / ProgramFile("tollmere_steam_helper"), helper);
    support::ChildProcess process({helper, {}, variables, folder});
    EXPECT_EQ(process.WaitForExit(), 0);
    EXPECT_EQ(CountInLog("Steam DLL could not be loaded from '" + support::ToUtf8(cut) + "\\steam_api64.dll'"), 1);
    EXPECT_EQ(SteamCalls(), "");
}

TEST_F(HelperFixture, OfAStoreOf400000EntriesTheLastNineStay) {
    const auto entry = [](int i) { return R"({"name":"","data":"","time":)" + std::to_string(i % 10) + "}"; };
    constexpr int kEntries = 400'000;
    fs::create_directories(EventFile().parent_path());
    std::ofstream store(EventFile(), std::ios::binary);
    store << R"({"metrics":[)" << entry(0);
    for (int i = 1; i < kEntries; ++i) store << ',' << entry(i);
    store << "]}";
    store.close();
    ASSERT_GT(fs::file_size(EventFile()), 12'000'000u);

    variables["SteamAppId"] = std::nullopt;
    Start();
    ExpectEnd();
    std::string last;
    for (int i = kEntries - 9; i < kEntries; ++i) last += ',' + entry(i);
    const std::string saved = support::ReadAll(EventFile());
    EXPECT_THAT(saved, testing::StartsWith(R"({"metrics":[{"name":"STEAM_ACTION","data":"\"id\":3,)"));
    EXPECT_THAT(saved, testing::EndsWith(last + "]}"));
    EXPECT_EQ(std::count(saved.begin(), saved.end(), '{'), 11) << "the store, one event of the run's own, the nine";

    rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    std::printf("peak: %ld MB\n", usage.ru_maxrss / 1024);
    EXPECT_TRUE(TOLLMERE_SANITIZED != 0 || usage.ru_maxrss < 150 * 1024);
}

}  // namespace

}  // namespace e2e
