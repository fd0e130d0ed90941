#pragma once

// The three ways in which the contenders are measured. All go round the contenders, so that whatever happens to the
// machine meanwhile happens to each of them; the round begins with another contender each time. All throw like
// Contender::Exchange.

#include <map>
#include <string>
#include <vector>

#include "bench/pipe/contender.h"
#include "bench/pipe/load_options.h"
#include "bench/pipe/samples.h"

namespace pipe_bench {

// Of one contender. Times are in nanoseconds.
struct Measured {
    // One request after the other; one element for each round.
    std::vector<Percentiles> m_FullSpeed;
    // Each of the requests that came ten a second.
    Samples m_Paced;
    // For so many requests in one write: the time of the batch divided by that number; of each round the median.
    std::map<std::size_t, Samples> m_Batches;
};

// By contender, in the contenders' order.
using AllMeasured = std::vector<Measured>;

void MeasureFullSpeed(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results);
void MeasurePaced(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results);
void MeasureBatches(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results);

}  // namespace pipe_bench
