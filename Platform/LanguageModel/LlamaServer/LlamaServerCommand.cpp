// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"

namespace platform {

using namespace Qt::StringLiterals;

LlamaServerCommand::LlamaServerCommand(int contextSize, std::chrono::seconds idleTime) {
    m_options = {
        // Two replies at once: one that nobody reads any more and the one that is wanted. They
        // share
        // the room for tokens instead of having half of it each.
        {{{u"--parallel"_s, u"2"_s}}},
        {{{u"--kv-unified"_s}, {}}},
        {{{u"--ctx-size"_s, QString::number(contextSize)}}},
        // Conversations stay in their slot; a store of old ones would only take memory.
        {{{u"--cache-ram"_s, u"0"_s}, {}}},
        {{{u"--sleep-idle-seconds"_s, QString::number(idleTime.count())}, {}}},
        {{{u"--offline"_s}, {}}},
        {{{u"--no-ui"_s}, {u"--no-webui"_s}, {}}},
        {{{u"--no-slots"_s}, {}}},
        {{{u"--jinja"_s}, {}}},
        {{{u"--reasoning"_s, u"off"_s}, {u"--reasoning-budget"_s, u"0"_s}, {}}},
        // Errors only: they tell why a start failed.
        {{{u"--log-verbosity"_s, u"1"_s}, {}}},
    };
}

EngineProcess::EnvironmentChanges LlamaServerCommand::environment() {
    return {.hiddenPrefixes = {"LLAMA_"}, .defaults = {"OMP_WAIT_POLICY=passive"}};
}

QStringList LlamaServerCommand::arguments(const QString& modelFile,
                                          const QString& socketPath) const {
    QStringList arguments{u"--model"_s, modelFile, u"--host"_s, socketPath};
    for (const Option& option : m_options)
        arguments += option.spellings[option.current];
    return arguments;
}

bool LlamaServerCommand::adapt(const QByteArray& complaint) {
    if (!complaint.contains("argument"))
        return false;
    for (Option& option : m_options) {
        const QStringList& spelling = option.spellings[option.current];
        if (spelling.isEmpty() || option.current + 1 == option.spellings.size())
            continue;
        // The name must stand alone: one option's name may begin another's.
        const QByteArray name = spelling.first().toUtf8();
        const qsizetype position = complaint.indexOf(name);
        if (position < 0)
            continue;
        const char next =
            position + name.size() < complaint.size() ? complaint.at(position + name.size()) : '\n';
        if (next == '-' || std::isalnum(static_cast<unsigned char>(next)))
            continue;
        ++option.current;
        return true;
    }
    return false;
}

int contextSizeFor(quint64 machineMemory) {
    constexpr quint64 plenty = 15ULL * 1024 * 1024 * 1024; // a machine sold with 16 GB
    return machineMemory >= plenty ? 16'384 : 8'192;
}

} // namespace platform
