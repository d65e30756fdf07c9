// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"

#include <QRegularExpression>

#include <unistd.h>

#include <array>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

/// A variable of the environment.
struct Variable {
    const char* name;
    const char* value;
};

/// How the engine's threads run, as far as the user has not said so in the same variables. They
/// wait for each other asleep: waiting busily they take the processors from one another and from
/// the window as soon as anything else runs.
constexpr std::array threadVariables{Variable{"OMP_WAIT_POLICY", "passive"}};

/// Without drivers there is no card: one that crashes when it is loaded must not even be that. One
/// variable for each generation of the library that loads them.
constexpr std::array withoutDrivers{Variable{"VK_LOADER_DRIVERS_DISABLE", "*"},
                                    Variable{"VK_DRIVER_FILES", "/dev/null"},
                                    Variable{"VK_ICD_FILENAMES", "/dev/null"}};

QByteArray assignment(const Variable& variable) {
    return QByteArray(variable.name) + '=' + variable.value;
}

} // namespace

LlamaServerCommand::LlamaServerCommand(std::chrono::seconds idleTime)
    : m_options{
          // One thing at a time: the next request waits until an abandoned one has been noticed,
          // and finds all that it shares with that one read.
          {u"--parallel 1"_s},
          // It is noticed only between two pieces of a long prompt.
          {u"--batch-size 256"_s},
          // Conversations stay in their slot; a store of old ones would only take memory.
          {u"--cache-ram 0"_s, u""_s},
          {u"--sleep-idle-seconds %1"_s.arg(idleTime.count()), u""_s},
          {u"--offline"_s, u""_s},
          {u"--no-ui"_s, u"--no-webui"_s, u""_s},
          {u"--no-slots"_s, u""_s},
          {u"--jinja"_s, u""_s},
          {u"--reasoning off"_s, u"--reasoning-budget 0"_s, u""_s},
          // Errors only: they tell why a start failed.
          {u"--log-verbosity 1"_s, u""_s},
      } {}

QByteArrayList LlamaServerCommand::environment() const {
    QByteArrayList variables;
    for (char** variable = environ; *variable; ++variable)
        if (!QByteArrayView(*variable).startsWith("LLAMA_"))
            variables.append(*variable);
    for (const Variable& variable : threadVariables)
        if (!qEnvironmentVariableIsSet(variable.name))
            variables.append(assignment(variable));
    if (m_usesCard)
        return variables;
    for (const Variable& variable : withoutDrivers) {
        const QByteArray start = QByteArray(variable.name) + '=';
        variables.removeIf([&start](const QByteArray& other) { return other.startsWith(start); });
        variables.append(assignment(variable));
    }
    return variables;
}

QStringList LlamaServerCommand::arguments(const QString& modelFile, const QString& socketPath,
                                          int contextSize) const {
    QStringList arguments{u"--model"_s, modelFile,       u"--host"_s,
                          socketPath,   u"--ctx-size"_s, QString::number(contextSize)};
    for (const QStringList& spellings : m_options)
        arguments += spellings.constFirst().split(u' ', Qt::SkipEmptyParts);
    return arguments;
}

bool LlamaServerCommand::leaveOutTheCard() {
    if (!m_usesCard)
        return false;
    m_usesCard = false;
    m_options.push_back({u"--device none"_s, u""_s});
    return true;
}

bool LlamaServerCommand::adapt(const QByteArray& complaint) {
    if (!complaint.contains("argument"))
        return false;
    for (QStringList& spellings : m_options) {
        // The name must stand alone: one option's name may begin another's.
        const QString name = spellings.constFirst().section(u' ', 0, 0);
        if (spellings.size() > 1 &&
            QString::fromUtf8(complaint).contains(QRegularExpression(name + u"(?![-\\w])"_s))) {
            spellings.removeFirst();
            return true;
        }
    }
    return false;
}

} // namespace platform
