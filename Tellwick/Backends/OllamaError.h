// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

#include <cstdint>

namespace tellwick {

/// What the Ollama backend itself has to say to the user. Errors of the transport and of reading
/// pass through it unchanged.
class OllamaError final : public platform::LocalizedError {
public:
    enum class Kind { badResponse, notRunning };

    /// The server answered with a status other than 200.
    static OllamaError badResponse(std::intptr_t status);
    /// The server cannot be reached.
    static OllamaError notRunning();

    Kind kind() const { return m_kind; }
    /// The status of badResponse; 0 otherwise.
    std::intptr_t status() const { return m_status; }

    QString errorDescription() const override;

    friend bool operator==(const OllamaError& a, const OllamaError& b) {
        return a.m_kind == b.m_kind && a.m_status == b.m_status;
    }

private:
    OllamaError(Kind kind, std::intptr_t status);

    Kind m_kind;
    std::intptr_t m_status;
};

} // namespace tellwick
