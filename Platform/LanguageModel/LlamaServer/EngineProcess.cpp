// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineProcess.h"

#include <QFile>

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace platform {

namespace {

constexpr qsizetype keptOutput = 65'536;

QByteArrayList changedEnvironment(const EngineProcess::EnvironmentChanges& changes) {
    QByteArrayList variables;
    for (char** variable = environ; *variable; ++variable) {
        const QByteArray entry(*variable);
        if (std::none_of(changes.hiddenPrefixes.begin(), changes.hiddenPrefixes.end(),
                         [&](const QByteArray& prefix) { return entry.startsWith(prefix); }))
            variables.append(entry);
    }
    for (const QByteArray& entry : changes.defaults)
        if (!qEnvironmentVariableIsSet(entry.left(entry.indexOf('=')).constData()))
            variables.append(entry);
    return variables;
}

std::vector<char*> pointers(QByteArrayList& texts) {
    std::vector<char*> pointers;
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What runs in the child between fork and exec. Other threads of the program do not exist here but
/// their locks do: nothing but plain system calls.
[[noreturn]] void becomeProgram(pid_t parent, int outputFile, char* const* arguments,
                                char* const* environment) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(127); // the program ended before the request above was made
    setsid();

    for (int number = 1; number < NSIG; ++number)
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    const rlimit noImage{0, 0};
    setrlimit(RLIMIT_CORE, &noImage);
    if (const int score = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC); score >= 0)
        (void)!write(score, "500", 3);

    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(outputFile, STDOUT_FILENO);
    dup2(outputFile, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    (void)!chdir("/");
    execve(arguments[0], arguments, environment);
    _exit(127);
}

} // namespace

std::unique_ptr<EngineProcess> EngineProcess::start(const QString& program,
                                                    const QStringList& arguments,
                                                    const EnvironmentChanges& changes) {
    QByteArrayList argumentTexts{QFile::encodeName(program)};
    for (const QString& argument : arguments)
        argumentTexts.append(QFile::encodeName(argument));
    QByteArrayList environmentTexts = changedEnvironment(changes);
    const std::vector<char*> argumentPointers = pointers(argumentTexts);
    const std::vector<char*> environmentPointers = pointers(environmentTexts);

    const int outputFile = memfd_create("engine-output", MFD_CLOEXEC);
    if (outputFile < 0)
        return nullptr;
    // No signal may reach the child before it has let go of the program's handlers.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t parent = getpid();
    const pid_t id = fork();
    if (id == 0)
        becomeProgram(parent, outputFile, argumentPointers.data(), environmentPointers.data());
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (id < 0) {
        close(outputFile);
        return nullptr;
    }
    return std::unique_ptr<EngineProcess>(new EngineProcess(id, outputFile));
}

EngineProcess::~EngineProcess() {
    if (isRunning()) {
        kill(m_id, SIGKILL);
        while (waitpid(m_id, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    close(m_outputFile);
}

bool EngineProcess::isRunning() {
    if (m_hasEnded)
        return false;
    int status = 0;
    pid_t ended = 0;
    do {
        ended = waitpid(m_id, &status, WNOHANG);
    } while (ended < 0 && errno == EINTR);
    if (ended == 0)
        return true;
    m_hasEnded = true;
    if (ended < 0)
        m_endSignal = SIGKILL; // somebody else was told its end
    else if (WIFSIGNALED(status))
        m_endSignal = WTERMSIG(status);
    return false;
}

QByteArray EngineProcess::output() const {
    QByteArray bytes(keptOutput, Qt::Uninitialized);
    const ssize_t size = pread(m_outputFile, bytes.data(), static_cast<std::size_t>(keptOutput), 0);
    bytes.truncate(size > 0 ? size : 0);
    return bytes;
}

} // namespace platform
