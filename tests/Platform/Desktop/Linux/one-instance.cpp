// SPDX-License-Identifier: MIT
// A program of which one instance runs: says on its standard output what becomes of it.
//
//   one-instance FOLDER LIMIT
//
// Ends when its standard input does.
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/WindowActivation.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

using platform::SingleInstance;

namespace {

void say(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 3)
        return 2;
    SingleInstance instance({QString::fromLocal8Bit(argv[1])});
    const auto claim =
        instance.claim(platform::activationToken(), std::chrono::milliseconds(std::atoi(argv[2])));
    if (claim != SingleInstance::Claim::First) {
        say(claim == SingleInstance::Claim::HandedOver ? "handed over" : "unanswered");
        return 0;
    }
    say("first");
    const QCoreApplication application(argc, argv);
    instance.onActivated([](const QByteArray& token) { say(("activated " + token).constData()); });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
