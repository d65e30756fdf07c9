// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/MachineMemory.h"

#include <QFile>

#include <unistd.h>

namespace platform {

namespace {

constexpr quint64 mebibyte = 1024 * 1024;
/// What the engine takes besides the model and the conversation.
constexpr quint64 engineSize = 300 * mebibyte;
/// Built into a machine that is sold with 16 GB. Smaller ones keep more for other programs.
constexpr quint64 plenty = 15 * 1024 * mebibyte;

constexpr int largestContext = 16'384;
constexpr int usualContext = 8'192;
constexpr int smallestContext = 2'048;

/// A conversation's tokens take the more the larger the model is. Those of usual models take a half
/// of this or all of it: the largest conversation as much as the model itself.
quint64 conversationSize(quint64 modelSize, int contextSize) {
    return modelSize / largestContext * static_cast<quint64>(contextSize);
}

} // namespace

MachineMemory MachineMemory::now() {
    const quint64 builtIn =
        static_cast<quint64>(sysconf(_SC_PHYS_PAGES)) * static_cast<quint64>(sysconf(_SC_PAGESIZE));
    MachineMemory memory{.total = builtIn, .available = builtIn};
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return memory;
    const QByteArray name = "\nMemAvailable:";
    const QByteArray lines = file.readAll();
    if (const qsizetype start = lines.indexOf(name); start >= 0) {
        const QByteArray line = lines.mid(start + name.size(), 64).trimmed();
        memory.available = line.left(line.indexOf(' ')).toULongLong() * 1024; // "12345 kB"
    }
    return memory;
}

std::optional<int> contextSizeFor(quint64 modelSize, const MachineMemory& memory) {
    int contextSize = memory.total >= plenty ? largestContext : usualContext;
    while (modelSize + conversationSize(modelSize, contextSize) + engineSize > memory.available) {
        if (contextSize == smallestContext)
            return std::nullopt;
        contextSize /= 2;
    }
    return contextSize;
}

} // namespace platform
