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
/// It remembers the turns that it has answered, so each request brings only its own prompt. When
/// the conversation has become longer than the model can hold, the oldest turns leave it, whole;
/// the instructions stay.
///
/// The model answers one prompt at a time, the newest. A request made while an earlier one is still
/// being answered, in this session or in another one of the same model, ends that answer where it
/// is: its stream ends normally, and what was said so far stays in its session as the turn's reply.
class LanguageModelSession {
public:
    LanguageModelSession() = default;
    LanguageModelSession(const LanguageModelSession&) = delete;
    LanguageModelSession& operator=(const LanguageModelSession&) = delete;
    virtual ~LanguageModelSession() = default;

    /// Lets the model get ready for the next turn, for one that is about to come: it loads, and
    /// reads ahead what it has to read for any prompt. Any thread; returns at once. Does nothing
    /// while the model answers. What goes wrong shows when the turn is asked for; where none comes,
    /// the model rests again as after any turn.
    virtual void prewarm() = 0;

    /// Sends the prompt as the next turn and returns at once; any thread, for one caller at a time.
    ///
    /// Each element of the stream is the whole reply so far. The stream ends when the reply is
    /// complete or a newer request ends it, or fails with a LocalizedError; a turn that failed is
    /// not remembered. A stream that is dropped early does not stop the turn: it is answered to its
    /// end, or to the next request, and remembered.
    virtual AsyncStream<TextSnapshot> streamResponse(const QString& prompt,
                                                     const GenerationOptions& options) = 0;
};

} // namespace platform
