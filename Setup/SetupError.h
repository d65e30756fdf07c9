// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

namespace setup {

/// Why something of the set-up could not be done, in a sentence for the user.
class SetupError final : public platform::LocalizedError {
public:
    explicit SetupError(QString sentence)
        : m_sentence(std::move(sentence)) {}

    QString errorDescription() const override { return m_sentence; }

private:
    QString m_sentence;
};

} // namespace setup
