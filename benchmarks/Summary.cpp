// SPDX-License-Identifier: MIT
#include "benchmarks/Summary.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

std::string text(const Summary& summary, const std::string& unit) {
    char line[96];
    std::snprintf(line, sizeof line, "%.1f %s [%.1f–%.1f]", summary.median, unit.c_str(),
                  summary.minimum, summary.maximum);
    return line;
}

} // namespace

Summary summarise(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    const std::size_t middle = samples.size() / 2;
    const double median =
        samples.size() % 2 == 1 ? samples[middle] : (samples[middle - 1] + samples[middle]) / 2;
    return {median, samples.front(), samples.back()};
}

std::string comparison(const std::string& name, const std::string& unit, const Summary& ours,
                       const Summary& floor) {
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "%.2f", ours.median / floor.median);
    return name + ": " + text(ours, unit) + ", bare window " + text(floor, unit) + ", ratio " +
           ratio;
}

} // namespace bench
