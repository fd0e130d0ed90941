// How long an answer takes, and how long the pipe is away between two clients.

#include <stdexcept>
#include <thread>

#include "bench/client.h"

// All have to do the same work. The bare server alone doesn't know what it says.
static void CompareAnswers(std::vector<Client>& clients) {
    const std::string expected(clients.front().Ask(InfoFrame()));
    for (Client& client : clients) {
        const std::string_view answer = client.Ask(InfoFrame());
        const bool isSame = client.Name() == "floor" ? answer.size() == expected.size() : answer == expected;
        if (!isSame) throw std::runtime_error(client.Name() + " answers otherwise than " + clients.front().Name());
    }
}

static Clock::duration TimeOfAnswer(Client& client) {
    const Clock::time_point begin = Clock::now();
    client.Ask(InfoFrame());
    return Clock::now() - begin;
}

void MeasureAnswers(const Texts& arguments) {
    std::vector<Client> clients = MakeClients(arguments, 3);
    for (Client& client : clients) client.Open();
    CompareAnswers(clients);

    const std::size_t requests = std::stoul(arguments.at(1));
    std::vector<Contender> atFullSpeed, paced;
    // Each is asked in its turn, so that all have been left alone equally long.
    const Clock::duration step = Clock::duration(std::chrono::milliseconds(100)) / clients.size();
    Clock::time_point next;
    for (Client& client : clients) {
        atFullSpeed.push_back({client.Name(), [&client, requests] {
                                   Times times;
                                   while (times.size() < requests) times.push_back(TimeOfAnswer(client));
                                   return times;
                               }});
        paced.push_back({client.Name(), [&client, &next, step] {
                             std::this_thread::sleep_until(next += step);
                             return Times{TimeOfAnswer(client)};
                         }});
    }
    TakeTurns("full-speed", std::stoi(arguments.at(0)), atFullSpeed);
    next = Clock::now();
    TakeTurns("paced", 10 * std::stoi(arguments.at(2)), paced);
}

static Clock::duration TimeToListenAgain(Client& client) {
    client.Open();
    client.Ask(InfoFrame());  // it has to know of us before we leave
    const Clock::time_point begin = Clock::now();
    client.Leave();
    while (!IsListening(client.Path())) std::this_thread::yield();
    return Clock::now() - begin;
}

void MeasureListening(const Texts& arguments) {
    std::vector<Client> clients = MakeClients(arguments, 1);
    std::vector<Contender> contenders;
    for (Client& client : clients) {
        contenders.push_back({client.Name(), [&client] { return Times{TimeToListenAgain(client)}; }});
    }
    TakeTurns("listening", std::stoi(arguments.at(0)), contenders);
}
