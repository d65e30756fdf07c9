// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <vector>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maximumOutput = 65'536;
constexpr int longestEnd = 500; // milliseconds

std::vector<char*> pointers(QByteArrayList& texts) {
    std::vector<char*> pointers;
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What a child needs of the program; made before it, where memory may still be asked for.
struct Orders {
    char* const* arguments;
    char* const* environment;
    int output;
    int lifeline; ///< ends when the program does
};

// What follows runs in the child between fork and exec. Other threads of the program do not exist
// there but their locks do: nothing but plain system calls.

/// Leaves no file open but these two, as standard input and output.
void openOnly(int input, int output) {
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
}

[[noreturn]] void becomeWatcher(const Orders& orders) {
    static char shell[] = "/bin/sh";
    static char option[] = "-c";
    static char script[] = "read -r _; kill -KILL 0";
    static std::array<char*, 4> arguments{shell, option, script, nullptr};
    static std::array<char*, 1> environment{nullptr};
    openOnly(orders.lifeline, orders.output);
    execve(shell, arguments.data(), environment.data());
    _exit(127);
}

[[noreturn]] void becomeProgram(const Orders& orders) {
    if (setsid() < 0)
        _exit(127); // the group to kill would be the program's own
    for (int number = 1; number < NSIG; ++number)
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    const rlimit noImage{0, 0};
    setrlimit(RLIMIT_CORE, &noImage);
    (void)!chdir("/");
    if (_Fork() == 0)
        becomeWatcher(orders);
    if (const int score = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC); score >= 0)
        (void)!write(score, "500", 3);
    openOnly(open("/dev/null", O_RDONLY), orders.output);
    execve(orders.arguments[0], orders.arguments, orders.environment);
    _exit(127);
}

/// Where a program was started with SIGCHLD ignored, the system keeps to itself how children end.
void letEndsBeTold() {
    struct sigaction action {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        signal(SIGCHLD, SIG_DFL);
}

/// How a process ended, 0 for by itself. A shell adds 128 to the signal that ended its program.
int signalOf(const siginfo_t& end) {
    if (end.si_code != CLD_EXITED)
        return end.si_status;
    return end.si_status > 128 ? end.si_status - 128 : 0;
}

} // namespace

std::unique_ptr<EngineProcess> EngineProcess::start(const QString& program,
                                                    const QStringList& arguments,
                                                    QByteArrayList environment) {
    QByteArrayList argumentTexts{QFile::encodeName(program)};
    for (const QString& argument : arguments)
        argumentTexts.append(QFile::encodeName(argument));
    const std::vector<char*> argumentPointers = pointers(argumentTexts);
    const std::vector<char*> environmentPointers = pointers(environment);

    UniqueFd output(memfd_create("engine-output", MFD_CLOEXEC));
    std::array<int, 2> pipeEnds{-1, -1};
    if (!output || pipe2(pipeEnds.data(), O_CLOEXEC) != 0)
        return nullptr;
    const UniqueFd watched(pipeEnds[0]);
    UniqueFd lifeline(pipeEnds[1]);
    const Orders orders{argumentPointers.data(), environmentPointers.data(), output.get(),
                        watched.get()};
    letEndsBeTold();
    // No signal may reach the child before it has let go of the program's handlers.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t id = fork();
    if (id == 0)
        becomeProgram(orders);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (id < 0)
        return nullptr;
    return std::unique_ptr<EngineProcess>(
        new EngineProcess(id, std::move(output), std::move(lifeline)));
}

EngineProcess::~EngineProcess() {
    if (!isRunning())
        return;
    kill();
    const UniqueFd process(static_cast<int>(syscall(SYS_pidfd_open, m_id, 0)));
    pollfd end{.fd = process.get(), .events = POLLIN, .revents = 0};
    if (process)
        (void)poll(&end, 1, longestEnd);
    isRunning();
}

bool EngineProcess::isRunning() {
    if (m_hasEnded)
        return false;
    siginfo_t end{};
    const bool isTold =
        waitid(P_PID, static_cast<id_t>(m_id), &end, WEXITED | WNOHANG | WNOWAIT) == 0;
    if (isTold && end.si_pid == 0)
        return true;
    m_hasEnded = true;
    m_endSignal = isTold ? signalOf(end) : SIGKILL; // or somebody else was told
    // Only now is its number free for others.
    if (isTold) {
        kill();
        waitpid(m_id, nullptr, 0);
    }
    return false;
}

void EngineProcess::kill() const {
    // Before the child has made its group there is only itself.
    if (::kill(-m_id, SIGKILL) != 0)
        ::kill(m_id, SIGKILL);
}

quint64 EngineProcess::workDone() const {
    quint64 work = 0;
    const QStringList processes = QDir(u"/proc"_s).entryList({u"[1-9]*"_s}, QDir::Dirs);
    for (const QString& process : processes) {
        QFile file(u"/proc/"_s + process + u"/stat"_s);
        if (!file.open(QIODevice::ReadOnly))
            continue; // it has just ended
        const QByteArray line = file.readAll();
        // State, parent and group come first behind the name, which may hold anything.
        const QByteArrayList fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.value(2).toLongLong() != m_id)
            continue;
        constexpr std::array counters{9, 11, 12}; // pages read in, time of its own, of the system
        for (const int counter : counters)
            work += fields.value(counter).toULongLong();
    }
    return work;
}

QByteArray EngineProcess::output() const {
    QByteArray bytes(maximumOutput, Qt::Uninitialized);
    const ssize_t size =
        pread(m_output.get(), bytes.data(), static_cast<std::size_t>(maximumOutput), 0);
    bytes.truncate(size > 0 ? size : 0);
    return bytes;
}

} // namespace platform
