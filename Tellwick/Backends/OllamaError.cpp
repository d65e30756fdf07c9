// SPDX-License-Identifier: MIT
#include "Tellwick/Backends/OllamaError.h"

namespace tellwick {

OllamaError OllamaError::badResponse(std::intptr_t status) {
    return OllamaError(
        QStringLiteral("Ollama returned an unexpected status (%1).").arg(qint64(status)));
}

OllamaError OllamaError::notRunning() {
    return OllamaError(QStringLiteral("Ollama is not running. Launch Ollama to use local models."));
}

} // namespace tellwick
