// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/Transcript.h"

#include <algorithm>

namespace platform {

namespace {

/// In bytes, with what the model's template puts around it.
qsizetype sizeOf(const AnsweredTurn& turn) {
    constexpr qsizetype marks = 64;
    return marks + turn.prompt.toUtf8().size() + turn.reply.view().toUtf8().size();
}

} // namespace

QByteArray Transcript::request(const AnsweredTurn& next, const GenerationOptions& options) const {
    return chatRequestBody(m_instructions, m_turns, next.prompt, options, next.reply.toString());
}

qsizetype Transcript::sizeWith(const AnsweredTurn& next) const {
    qsizetype size = m_instructions.toUtf8().size() + sizeOf(next);
    for (const AnsweredTurn& turn : m_turns)
        size += sizeOf(turn);
    return size;
}

void Transcript::letGo(const AnsweredTurn& next, qint64 tokens, qint64 contextSize) {
    const qsizetype size = sizeWith(next);
    qsizetype kept = size - sizeOf(m_turns.takeFirst());
    if (tokens == 0)
        return;
    // Its own measure of bytes to a token is better than any that holds for all languages.
    const auto bytes = [&](qint64 part) { return part * size / tokens; };
    const qsizetype alone = m_instructions.toUtf8().size() + sizeOf(next);
    const qsizetype enough = std::clamp(alone + bytes(contextSize / 8), bytes(contextSize / 2),
                                        bytes(contextSize * 3 / 4));
    while (!m_turns.isEmpty() && kept > enough)
        kept -= sizeOf(m_turns.takeFirst());
}

} // namespace platform
