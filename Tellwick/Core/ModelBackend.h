// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/AsyncStream.h"
#include "Platform/Text/TextSnapshot.h"
#include "Tellwick/Core/ChatMessage.h"
#include "Tellwick/Core/ModelInfo.h"

#include <QList>

namespace tellwick {

/// A stream of reply texts: each element is the whole reply so far, never a fragment.
using ReplyStream = platform::AsyncStream<platform::TextSnapshot>;

/// A model that answers. An object with identity, shared between the catalogue and the
/// conversation.
class ModelBackend {
public:
    ModelBackend() = default;
    virtual ~ModelBackend() = default;

    virtual const ModelInfo& info() const = 0;

    /// Whether the model can be used now.
    virtual bool isAvailable() const = 0;

    /// Begins a reply and returns at once. Main thread.
    ///
    /// @param prompt the user's new message.
    /// @param history every message before it, oldest first: neither the prompt nor the place kept
    ///     for its reply.
    /// @param systemPrompt what the model is told about itself.
    /// @return a stream that ends normally when the reply is complete, or with an error whose
    ///     description is shown to the user. The caller may stop consuming at any moment; the model
    ///     goes on to the end of the reply all the same, and the rest is dropped.
    virtual ReplyStream streamResponse(const QString& prompt, const QList<ChatMessage>& history,
                                       const QString& systemPrompt) = 0;

    /// Forgets what the backend keeps of the conversation between turns. Main thread.
    virtual void reset() = 0;

private:
    Q_DISABLE_COPY(ModelBackend)
};

} // namespace tellwick
