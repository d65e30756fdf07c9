// SPDX-License-Identifier: MIT
// A program that runs until it is asked to end, and says so: "ready", then "quitting" from its
// event loop.
//
//   until-terminated [stay]     stay: says "quitting" and runs on
#include "Platform/Desktop/TerminationSignals.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
    const bool stays = argc > 1;
    const QCoreApplication application(argc, argv);
    const platform::TerminationSignals signals([stays] {
        std::puts("quitting");
        std::fflush(stdout);
        if (!stays)
            QCoreApplication::exit(7);
    });
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
