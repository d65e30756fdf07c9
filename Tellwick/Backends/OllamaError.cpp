// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaError.h"

namespace tellwick {

OllamaError::OllamaError(Kind kind, std::intptr_t status)
    : m_kind(kind)
    , m_status(status) {}

OllamaError OllamaError::badResponse(std::intptr_t status) {
    return {Kind::badResponse, status};
}

OllamaError OllamaError::notRunning() {
    return {Kind::notRunning, 0};
}

QString OllamaError::errorDescription() const {
    switch (m_kind) {
    case Kind::badResponse:
        return QStringLiteral("Ollama returned an unexpected status (%1).").arg(m_status);
    case Kind::notRunning:
        return QStringLiteral("Ollama is not running. Launch Ollama to use local models.");
    }
    Q_UNREACHABLE();
}

} // namespace tellwick
