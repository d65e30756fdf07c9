// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/LlamaServer/ChatCompletion.h"

namespace platform {

/// What a session knows: its instructions and the turns that it has answered, as far as they fit
/// the model's context.
class Transcript {
public:
    explicit Transcript(QString instructions)
        : m_instructions(std::move(instructions)) {}

    bool hasTurns() const { return !m_turns.isEmpty(); }
    void append(const AnsweredTurn& turn) { m_turns.append(turn); }

    /// The request for the next turn, of which the model may have said something already.
    QByteArray request(const AnsweredTurn& next, const GenerationOptions& options) const;

    /// Lets the oldest turns go, whole: one, and as many more as it takes to leave room for a reply
    /// to the next turn, and for some turns after that, so that not each of them lets one go and
    /// all others are read anew. There has to be a turn.
    ///
    /// @param tokens the length of the request as it was; 0 where it is not known.
    /// @param contextSize the room for all of it.
    void letGo(const AnsweredTurn& next, qint64 tokens, qint64 contextSize);

private:
    qsizetype sizeWith(const AnsweredTurn& next) const;

    QString m_instructions;
    QList<AnsweredTurn> m_turns;
};

} // namespace platform
