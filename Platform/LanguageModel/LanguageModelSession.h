// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Text/TextSnapshot.h"

#include <QString>

#include <optional>

namespace platform {

/// How a reply is generated. Whatever is left unset follows the model's own defaults.
struct GenerationOptions {
    /// How the next token is picked from those that the model finds likely.
    enum class Sampling {
        /// Always the likeliest: the same prompt gives the same reply.
        Greedy,
        /// By chance, weighted by likelihood.
        Random,
    };

    std::optional<Sampling> sampling;
    /// Spread of the likelihoods: 0 is the narrowest, 1 is as the model was trained.
    std::optional<double> temperature;
    /// The longest reply, in tokens of the model.
    std::optional<int> maximumResponseTokens;
};

/// One conversation with the system's language model, made by SystemLanguageModel::makeSession().
///
/// It remembers the turns that it has answered, so each request brings only its own prompt. One
/// turn at a time: a request made while another is being answered fails.
class LanguageModelSession {
public:
    LanguageModelSession() = default;
    LanguageModelSession(const LanguageModelSession&) = delete;
    LanguageModelSession& operator=(const LanguageModelSession&) = delete;
    virtual ~LanguageModelSession() = default;

    /// Sends the prompt as the next turn and returns at once; any thread, for one caller at a time.
    ///
    /// Each element of the stream is the whole reply so far. The stream ends when the reply is
    /// complete, or fails with a LocalizedError; a turn that failed is not remembered. A stream
    /// that is dropped early does not stop the turn: it is answered to its end and remembered.
    virtual AsyncStream<TextSnapshot> streamResponse(const QString& prompt,
                                                     const GenerationOptions& options) = 0;
};

} // namespace platform
