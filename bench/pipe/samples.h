#pragma once

#include <vector>

namespace pipe_bench {

using Samples = std::vector<double>;

// The sample that `percent` of all, 0 to 100, don't exceed (nearest rank). `samples` must not be empty.
double Percentile(Samples samples, double percent);

// The three that are reported.
struct Percentiles {
    explicit Percentiles(const Samples& samples);

    double p50;
    double p95;
    double p99;
};

}  // namespace pipe_bench
