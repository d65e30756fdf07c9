// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerError.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace platform {

/// One turn that the model has answered.
struct AnsweredTurn {
    QString prompt;
    TextSnapshot reply;
};

/// The body of a request for the next turn: the instructions (left out when empty), the turns so
/// far and the prompt.
///
/// @param said what the model has said in reply already; it goes on from there.
QByteArray chatRequestBody(const QString& instructions, const QList<AnsweredTurn>& turns,
                           const QString& prompt, const GenerationOptions& options,
                           const QString& said = {});

/// Why the engine does not answer.
struct ChatFailure {
    LlamaServerError::Kind kind = LlamaServerError::Kind::NoAnswer;
    // Where the request is too long for the model's context: its length and the context's, in
    // tokens. 0 where the engine does not tell.
    qint64 tokens = 0;
    qint64 contextSize = 0;
};

/// What one line of the reply tells. Nothing in it: a line without meaning here.
struct ChatEvent {
    QString content;         ///< the reply's next characters
    bool isComplete = false; ///< the reply has ended
    bool isCutOff = false;   ///< it has, at the context's end or the longest reply asked for
    /// The request's length in tokens; told before the model begins to read it.
    std::optional<qint64> requestTokens;
    std::optional<ChatFailure> failure;
};

/// Reads one line of a server-sent event stream. Throws JsonReadingError.
ChatEvent readChatEvent(const QByteArray& line);

/// What the body of a response with an error status tells. Does not fail.
ChatFailure readChatFailure(const QByteArray& body);

} // namespace platform
