// SPDX-License-Identifier: MIT
// A program of which one instance runs: says on its standard output what becomes of it.
//
//   one-instance ID MODE LIMIT     MODE: normal, or hung (claims the place and never looks at
//   events)
//
// Ends when its standard input does.
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/Desktop/WindowActivation.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

using platform::SingleInstance;

namespace {

void say(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

bool inputIsOpen() {
    char byte = 0;
    return read(STDIN_FILENO, &byte, 1) > 0;
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 4)
        return 2;
    SingleInstance instance(
        platform::UserDirectories::ofThisUser(QString::fromLocal8Bit(argv[1])).runtimeFolders());
    const auto claim =
        instance.claim(platform::activationToken(), std::chrono::milliseconds(std::atoi(argv[3])));
    if (claim != SingleInstance::Claim::First) {
        say(claim == SingleInstance::Claim::HandedOver ? "handed over" : "unanswered");
        return 0;
    }
    say("first");
    if (std::strcmp(argv[2], "hung") == 0) {
        while (inputIsOpen()) {
        }
        return 0;
    }
    const QCoreApplication application(argc, argv);
    instance.onActivated([](const QByteArray& token) { say(("activated " + token).constData()); });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [] {
        if (!inputIsOpen())
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
