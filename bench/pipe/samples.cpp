#include "bench/pipe/samples.h"

#include <algorithm>
#include <cmath>

namespace pipe_bench {

double Percentile(Samples samples, double percent) {
    const double rank = std::ceil(percent / 100 * static_cast<double>(samples.size()));
    const auto index = static_cast<std::ptrdiff_t>(std::max(rank, 1.0)) - 1;
    std::nth_element(samples.begin(), samples.begin() + index, samples.end());
    return samples[static_cast<std::size_t>(index)];
}

Percentiles::Percentiles(const Samples& samples)
    : p50(Percentile(samples, 50)), p95(Percentile(samples, 95)), p99(Percentile(samples, 99)) {}

}  // namespace pipe_bench
