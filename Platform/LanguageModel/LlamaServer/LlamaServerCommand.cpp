// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"

#include <QRegularExpression>

#include <unistd.h>

namespace platform {

using namespace Qt::StringLiterals;

LlamaServerCommand::LlamaServerCommand(int contextSize, std::chrono::seconds idleTime)
    : m_options{
          // Two replies at once: one that nobody reads any more and the one that is wanted. They
          // share the room for tokens instead of having half of it each.
          {u"--parallel 2"_s},
          {u"--kv-unified"_s, u""_s},
          {u"--ctx-size %1"_s.arg(contextSize)},
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

QByteArrayList LlamaServerCommand::environment() {
    QByteArrayList variables;
    for (char** variable = environ; *variable; ++variable)
        if (!QByteArrayView(*variable).startsWith("LLAMA_"))
            variables.append(*variable);
    if (!qEnvironmentVariableIsSet("OMP_WAIT_POLICY"))
        variables.append("OMP_WAIT_POLICY=passive");
    return variables;
}

QStringList LlamaServerCommand::arguments(const QString& modelFile,
                                          const QString& socketPath) const {
    QStringList arguments{u"--model"_s, modelFile, u"--host"_s, socketPath};
    for (const QStringList& spellings : m_options)
        arguments += spellings.constFirst().split(u' ', Qt::SkipEmptyParts);
    return arguments;
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

int contextSizeFor(quint64 machineMemory) {
    constexpr quint64 plenty = 15ULL * 1024 * 1024 * 1024; // a machine sold with 16 GB
    return machineMemory >= plenty ? 16'384 : 8'192;
}

} // namespace platform
