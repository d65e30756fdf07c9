// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace bench {

/// The median of a series of measurements with its extremes.
struct Summary {
    double median = 0;
    double minimum = 0;
    double maximum = 0;
};

/// Sums up a series of at least one measurement.
Summary summarise(std::vector<double> samples);

/// One line: the figure's name, ours, the floor, and the ratio of their medians.
std::string comparison(const std::string& name, const std::string& unit, const Summary& ours,
                       const Summary& floor);

} // namespace bench
