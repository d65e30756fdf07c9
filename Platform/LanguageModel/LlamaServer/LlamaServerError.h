// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

namespace platform {

/// Why the on-device model gave no reply, in a sentence for the user.
class LlamaServerError final : public LocalizedError {
public:
    enum class Kind {
        PromptTooLong,  ///< the prompt alone does not fit the model's context
        EngineHung,     ///< the engine did nothing for too long and was ended
        EngineStopped,  ///< the engine's process ended while it was needed
        EngineUnusable, ///< the engine cannot be started on this machine
        ModelDamaged,   ///< the engine cannot read the model's file
        ModelMissing,   ///< there is no model file
        OutOfMemory,    ///< the machine has not enough memory left
        NoAnswer,       ///< the engine refused the request for a reason of its own
    };

    explicit LlamaServerError(Kind kind)
        : m_kind(kind) {}

    Kind kind() const { return m_kind; }
    QString errorDescription() const override;

private:
    Kind m_kind;
};

} // namespace platform
