// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/TaskScope.h"
#include "Platform/LanguageModel/LanguageModelSession.h"

#include <memory>

namespace platform {

class LlamaServer;

/// A conversation that llama-server answers. The turns are kept here and sent whole with each
/// request; the engine recognises the beginning that it has read before.
class LlamaServerSession final : public LanguageModelSession {
public:
    /// @param scope where turns run: the network thread's.
    LlamaServerSession(std::shared_ptr<LlamaServer> server, TaskScope& scope, QString instructions);

    void prewarm() override;
    AsyncStream<TextSnapshot> streamResponse(const QString& prompt,
                                             const GenerationOptions& options) override;

private:
    // What turns need; they hold these and not the session. Network thread.
    struct Conversation;
    struct Turn;
    struct End;
    static Task<void> answer(std::shared_ptr<Conversation> conversation,
                             std::shared_ptr<Turn> turn);
    static Task<void> say(std::shared_ptr<Conversation> conversation, std::shared_ptr<Turn> turn);
    static Task<End> ask(std::shared_ptr<Conversation> conversation, std::shared_ptr<Turn> turn);
    static Task<void> readAhead(std::shared_ptr<Conversation> conversation);

    TaskScope& m_scope;
    std::shared_ptr<Conversation> m_conversation;
};

} // namespace platform
