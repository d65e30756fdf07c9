// SPDX-License-Identifier: MIT
#include "Setup/EngineInstaller.h"

#include "Platform/Desktop/PathTexts.h"
#include "Setup/SetupError.h"
#include "Setup/Until.h"

#include <QProcess>

#include <signal.h>
#include <unistd.h>

namespace setup {

using namespace Qt::StringLiterals;
using platform::toText;

namespace {

/// Ends a process that leads a group, and those that it has started.
class GroupEnd {
public:
    explicit GroupEnd(QProcess& process)
        : m_process(process) {}
    GroupEnd(const GroupEnd&) = delete;
    GroupEnd& operator=(const GroupEnd&) = delete;
    ~GroupEnd() {
        if (m_process.state() == QProcess::NotRunning)
            return;
        constexpr int longestTidyingUp = 2'000; // milliseconds
        kill(-static_cast<pid_t>(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(longestTidyingUp))
            kill(-static_cast<pid_t>(m_process.processId()), SIGKILL);
    }

private:
    QProcess& m_process;
};

/// The sentence in which the helper says at the end why there is no engine.
QString reasonIn(const QByteArray& output) {
    QString line = QString::fromUtf8(output).trimmed().section(u'\n', -1).trimmed();
    const auto name = u"get-engine: "_s;
    if (line.startsWith(name))
        line.remove(0, name.size());
    return line.isEmpty() ? u"The engine could not be installed."_s : line;
}

} // namespace

QString EngineInstaller::offer() const {
    return u"llama-server of the llama.cpp project, about 20 MB, from this system's package "
           "sources into %1. The system itself is not changed."_s.arg(
               toText(m_folder.parent_path()));
}

platform::Task<void> EngineInstaller::install() const {
    QProcess process;
    process.setProgram(toText(m_helper));
    process.setArguments({u"--for-user"_s, toText(m_folder)});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setChildProcessModifier([] { setpgid(0, 0); });
    const GroupEnd end(process);
    process.start();
    Until ended([&process](QObject& context, const Until::Wake& wake) {
        QObject::connect(&process, &QProcess::finished, &context, wake);
        QObject::connect(&process, &QProcess::errorOccurred, &context, wake);
    });
    if (process.state() != QProcess::NotRunning)
        co_await ended;
    if (process.error() == QProcess::FailedToStart)
        throw SetupError(
            u"The engine could not be installed: %1 does not start."_s.arg(process.program()));
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw SetupError(reasonIn(process.readAllStandardError()));
}

} // namespace setup
