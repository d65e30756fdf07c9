// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/LanguageModel/LanguageModelSession.h"
#include "Platform/LanguageModel/LlamaServer/ChatCompletion.h"

#include <memory>

namespace platform {

class LlamaServer;

/// A conversation that llama-server answers. The turns are kept here and sent whole with each
/// request; the engine recognises the beginning that it has read before.
class LlamaServerSession final : public LanguageModelSession {
public:
    /// @param scope where turns run: the network thread's.
    LlamaServerSession(std::shared_ptr<LlamaServer> server, TaskScope& scope, QString instructions);

    AsyncStream<TextSnapshot> streamResponse(const QString& prompt,
                                             const GenerationOptions& options) override;

private:
    /// What a turn needs; it holds this and not the session. Network thread.
    struct Conversation;
    static Task<void> answer(std::shared_ptr<Conversation> conversation, QString prompt,
                             GenerationOptions options, StreamContinuation<TextSnapshot> reply);

    TaskScope& m_scope;
    std::shared_ptr<Conversation> m_conversation;
};

} // namespace platform
