// SPDX-License-Identifier: MIT
#include "Platform/Desktop/TerminationSignals.h"

#include <QSocketNotifier>

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

void handleSignal(int /*number*/) {
    const int saved = errno;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUpFile, &one, sizeof one);
    errno = saved;
}

} // namespace

class TerminationSignals::Implementation {
public:
    explicit Implementation(std::function<void()> requested)
        : m_requested(std::move(requested))
        , m_file(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
        , m_notifier(m_file, QSocketNotifier::Read) {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { take(); });
        wakeUpFile = m_file;
        for (size_t i = 0; i < signalNumbers.size(); ++i)
            install(signalNumbers.at(i), m_previous.at(i));
    }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;
    ~Implementation() {
        for (size_t i = 0; i < signalNumbers.size(); ++i)
            sigaction(signalNumbers.at(i), &m_previous.at(i), nullptr);
        wakeUpFile = -1;
        m_notifier.setEnabled(false);
        close(m_file);
    }

private:
    static void install(int number, struct sigaction& previous) {
        sigaction(number, nullptr, &previous);
        if (previous.sa_handler == SIG_IGN)
            return;
        struct sigaction action {};
        action.sa_handler = &handleSignal;
        action.sa_flags = SA_RESTART;
        if (number == SIGINT)
            action.sa_flags |= static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        sigaction(number, &action, nullptr);
    }

    void take() {
        uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = read(m_file, &count, sizeof count);
        if (const auto requested = std::exchange(m_requested, nullptr))
            requested();
    }

    std::function<void()> m_requested;
    int m_file;
    QSocketNotifier m_notifier;
    std::array<struct sigaction, signalNumbers.size()> m_previous{};
};

TerminationSignals::TerminationSignals(std::function<void()> requested)
    : m_implementation(std::make_unique<Implementation>(std::move(requested))) {}

TerminationSignals::~TerminationSignals() = default;

} // namespace platform
