#pragma once

// What is measured from inside the system that the programs run on. Each function prints its times through TakeTurns
// and throws std::runtime_error or std::system_error if something doesn't go as it should.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

using Clock = std::chrono::steady_clock;
using Times = std::vector<Clock::duration>;
using Texts = std::vector<std::string>;

struct Contender {
    std::string m_Name;
    std::function<Times()> m_Measure;
};

// Measures all in rounds that begin with another each time, so that what happens to the machine meanwhile happens to
// each of them. Prints a line "WHAT NAME NANOSECONDS..." for each, with the times in the order of the rounds. Two
// rounds more go first and aren't printed.
void TakeTurns(const std::string& what, int rounds, const std::vector<Contender>& contenders);

// The arguments of each function are those of the command of its name; measure_main.cpp tells them.
void MeasureAnswers(const Texts& arguments);
void MeasureListening(const Texts& arguments);
void MeasureLaunch(const Texts& arguments);
void MeasureStartAndClose(const Texts& arguments);
void MeasureStore(const Texts& arguments);
