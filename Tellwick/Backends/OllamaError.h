// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

#include <cstdint>

namespace tellwick {

/// What the Ollama backend itself has to say to the user. Errors of the transport and of reading
/// pass through it unchanged.
class OllamaError final : public platform::LocalizedError {
public:
    /// The server answered with a status other than 200.
    static OllamaError badResponse(std::intptr_t status) {
        return OllamaError(
            QStringLiteral("Ollama returned an unexpected status (%1).").arg(qint64(status)));
    }
    /// The server cannot be reached.
    static OllamaError notRunning() {
        return OllamaError(
            QStringLiteral("Ollama is not running. Launch Ollama to use local models."));
    }

    QString errorDescription() const override { return m_description; }

private:
    explicit OllamaError(QString description)
        : m_description(std::move(description)) {}

    QString m_description;
};

} // namespace tellwick
