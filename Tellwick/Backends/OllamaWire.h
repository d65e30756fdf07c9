// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Backends/OllamaModelEntry.h"

#include <QByteArray>
#include <QList>
#include <QString>

// The documents exchanged with a local Ollama server. Reading is strict: each field that a type
// names must be there with a value of its type, or the whole document fails with a
// platform::JsonReadingError; everything else in the document is ignored. Of a key that comes twice
// the last one counts.

namespace tellwick {

/// One message of a chat request.
struct OllamaMessage {
    QString role; ///< "system", "user" or "assistant"
    QString content;
};

/// The body of a chat request. It always asks for a streamed reply.
struct OllamaChatRequest {
    QString model;
    QList<OllamaMessage> messages;

    /// The request as compact JSON in UTF-8.
    QByteArray toJson() const;
};

/// One line of a streamed chat reply.
struct OllamaChatChunk {
    struct Message {
        QString content; ///< what this line adds to the reply
    };
    Message message;
    bool done = false; ///< whether this is the last line

    /// Reads one line, without its terminator.
    static OllamaChatChunk fromJson(QByteArrayView line);
};

/// The server's list of models.
struct OllamaTagsResponse {
    QList<OllamaModelEntry> models; ///< in the server's order

    static OllamaTagsResponse fromJson(QByteArrayView document);
};

} // namespace tellwick
