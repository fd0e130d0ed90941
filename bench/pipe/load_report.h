#pragma once

#include <vector>

#include "bench/pipe/contender.h"
#include "bench/pipe/load_options.h"
#include "bench/pipe/measurements.h"

namespace pipe_bench {

// Writes what was measured to options.m_Output. In a list of the same kind the elements at one place, of all
// contenders, are of the same round. Throws std::runtime_error if the file can't be written.
void WriteLoadReport(const LoadOptions& options, const std::vector<Contender>& contenders, std::size_t answerSize,
                     const AllMeasured& results);

}  // namespace pipe_bench
