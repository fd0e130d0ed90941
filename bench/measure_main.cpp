#include <cstdio>
#include <exception>
#include <map>

#include "bench/measure.h"
#include "support/system.h"

static constexpr char kUsage[] = R"(usage: bench_measure COMMAND ARGUMENT...
  answers ROUNDS REQUESTS SECONDS NAME PATH [NAME PATH...]   questions at full speed, then ten a second
  listening ROUNDS NAME PATH [NAME PATH...]                  from the client's end until the pipe listens again
  launch ROUNDS PATH GAME DIRECTORY                          by the helper at PATH, and without it
  start-and-close ROUNDS NAME PATH COUNT PROGRAM [ARGUMENT...] [NAME ...]
                                                             two times each; COUNT counts the program, too
  store ROUNDS                                               the helper's event store
)";

void TakeTurns(const std::string& what, int rounds, const std::vector<Contender>& contenders) {
    constexpr int kWarmUp = 2;
    std::vector<Times> times(contenders.size());
    for (int round = 0; round < kWarmUp + rounds; ++round) {
        for (std::size_t turn = 0; turn < contenders.size(); ++turn) {
            const std::size_t i = (static_cast<std::size_t>(round) + turn) % contenders.size();
            const Times measured = contenders[i].m_Measure();
            if (round >= kWarmUp) times[i].insert(times[i].end(), measured.begin(), measured.end());
        }
    }
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        std::printf("%s %s", what.c_str(), contenders[i].m_Name.c_str());
        for (const Clock::duration time : times[i]) {
            std::printf(" %lld", static_cast<long long>(std::chrono::nanoseconds(time).count()));
        }
        std::puts("");
    }
}

int main(int argc, char** argv) {
    const std::map<std::string, void (*)(const Texts&)> commands = {{"answers", MeasureAnswers},
                                                                    {"listening", MeasureListening},
                                                                    {"launch", MeasureLaunch},
                                                                    {"start-and-close", MeasureStartAndClose},
                                                                    {"store", MeasureStore}};
    Texts arguments = support::Arguments(argc, argv);
    const auto command = commands.find(arguments.size() < 2 ? "" : arguments[1]);
    if (command == commands.end()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        command->second({arguments.begin() + 2, arguments.end()});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", command->first.c_str(), error.what());
        return 1;
    }
    return 0;
}
