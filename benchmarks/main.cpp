// SPDX-License-Identifier: MIT
// Measures the program against a bare window of the toolkit, in turns, on one display.
//
//   measure PROGRAM BARE_WINDOW [--runs N]
//
// A further figure is one more entry of `figures`.
#include "benchmarks/RunningProgram.h"
#include "benchmarks/ScreenWatcher.h"
#include "benchmarks/Summary.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

using namespace std::chrono_literals;
using namespace bench;

namespace {

struct Figure {
    std::string name;
    std::string unit;
    double (*measure)(RunningProgram& program, ScreenWatcher& screen);
};

constexpr auto longestStart = 20s;
constexpr auto idleTime = 5s;

// Figures are taken from one start after the other's end, in this order.
const Figure figures[] = {
    {"exec to first painted frame", "ms",
     [](RunningProgram& program, ScreenWatcher& screen) {
         const Clock::time_point limit = program.started() + longestStart;
         while (!screen.sawPaint() && Clock::now() < limit) {
             screen.recordUntil(Clock::now() + 50ms);
             program.expectAlive();
         }
         screen.recordUntil(Clock::now() + idleTime);
         program.expectAlive();
         const auto frame = screen.firstSettledFrame();
         if (!frame)
             throw std::runtime_error("the window was not painted, or never came to rest");
         return std::chrono::duration<double, std::milli>(*frame - program.started()).count();
     }},
    {"PSS after 5 idle seconds", "MiB",
     [](RunningProgram& program, ScreenWatcher&) { return program.proportionalSetSize(); }},
};

std::vector<double> measureOnce(const std::string& path, const UserFolders& user,
                                ScreenWatcher& screen) {
    screen.begin();
    RunningProgram program(path, user);
    std::vector<double> values;
    for (const Figure& figure : figures)
        values.push_back(figure.measure(program, screen));
    return values;
}

void compare(const std::string& ours, const std::string& floor, int runs) {
    const std::string paths[] = {ours, floor};
    std::vector<double> samples[std::size(paths)][std::size(figures)];
    ScreenWatcher screen;
    // The first start of each warms the system's caches and makes the program's files, as a user's
    // very first start does; what counts are the ordinary starts after it.
    const UserFolders users[std::size(paths)];
    for (int run = -1; run < runs; ++run) {
        for (std::size_t which = 0; which < std::size(paths); ++which) {
            const std::vector<double> values = measureOnce(paths[which], users[which], screen);
            for (std::size_t i = 0; run >= 0 && i < values.size(); ++i)
                samples[which][i].push_back(values[i]);
        }
    }
    for (std::size_t i = 0; i < std::size(figures); ++i) {
        std::cout << comparison(figures[i].name, figures[i].unit, summarise(samples[0][i]),
                                summarise(samples[1][i]))
                  << '\n';
    }
}

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    int runs = 10;
    if (arguments.size() == 4 && arguments[2] == "--runs")
        runs = std::atoi(arguments[3].c_str());
    else if (arguments.size() != 2)
        runs = 0;
    if (runs < 1) {
        std::cerr << "Usage: measure PROGRAM BARE_WINDOW [--runs N]\n";
        return 2;
    }
    try {
        compare(arguments[0], arguments[1], runs);
    } catch (const std::exception& error) {
        std::cerr << "measure: " << error.what() << '\n';
        return 1;
    }
}
