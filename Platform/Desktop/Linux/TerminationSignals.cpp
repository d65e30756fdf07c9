// SPDX-License-Identifier: MIT
#include "Platform/Desktop/TerminationSignals.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>

namespace platform {

namespace {

constexpr std::array signalNumbers = {SIGTERM, SIGINT, SIGHUP};

/// A signal handler can reach nothing but what is static.
volatile sig_atomic_t wakeUpFile = -1;
std::array<struct sigaction, signalNumbers.size()> previous;

void handleSignal(int /*number*/) {
    const int saved = errno;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUpFile, &one, sizeof one);
    errno = saved;
}

void install(int number, struct sigaction& before) {
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN)
        return;
    struct sigaction action {};
    action.sa_handler = &handleSignal;
    action.sa_flags = SA_RESTART;
    if (number == SIGINT)
        action.sa_flags |= static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> requested)
    : m_notifier(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
                     [this, requested = std::move(requested)] {
                         m_notifier.setEnabled(false);
                         requested();
                     });
    wakeUpFile = static_cast<int>(m_notifier.socket());
    for (size_t i = 0; i < signalNumbers.size(); ++i)
        install(signalNumbers.at(i), previous.at(i));
}

TerminationSignals::~TerminationSignals() {
    for (size_t i = 0; i < signalNumbers.size(); ++i)
        sigaction(signalNumbers.at(i), &previous.at(i), nullptr);
    wakeUpFile = -1;
    m_notifier.setEnabled(false);
    close(static_cast<int>(m_notifier.socket()));
}

} // namespace platform
