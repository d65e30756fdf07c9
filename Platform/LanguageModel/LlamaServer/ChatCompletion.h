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
QByteArray chatRequestBody(const QString& instructions, const QList<AnsweredTurn>& turns,
                           const QString& prompt, const GenerationOptions& options);

/// What one line of the reply tells. Nothing in it: a line without meaning here.
struct ChatEvent {
    QString content;         ///< the reply's next characters
    bool isComplete = false; ///< the model has ended its reply
    std::optional<LlamaServerError::Kind> failure;
};

/// Reads one line of a server-sent event stream. Throws JsonReadingError.
ChatEvent readChatEvent(const QByteArray& line);

/// What the body of a response with an error status tells. Does not fail.
LlamaServerError::Kind readChatFailure(const QByteArray& body);

} // namespace platform
