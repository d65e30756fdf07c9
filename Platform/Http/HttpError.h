// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Errors.h"

namespace platform {

/// A request that got no complete response.
class HttpError final : public LocalizedError {
public:
    enum class Kind {
        CouldNotConnect, ///< nobody listens there
        ConnectionLost,  ///< the connection ended before the response was complete
        TimedOut,        ///< the server was silent for longer than the request allows
        BadResponse,     ///< what the server sent is not HTTP
        TooLarge,        ///< the response passes what the client takes
    };

    explicit HttpError(Kind kind)
        : m_kind(kind) {}

    Kind kind() const { return m_kind; }

    QString errorDescription() const override {
        switch (m_kind) {
        case Kind::CouldNotConnect:
            return QStringLiteral("Could not connect to the server.");
        case Kind::ConnectionLost:
            return QStringLiteral("The connection to the server was lost.");
        case Kind::TimedOut:
            return QStringLiteral("The request timed out.");
        case Kind::BadResponse:
            return QStringLiteral("The server sent a response that could not be understood.");
        case Kind::TooLarge:
            return QStringLiteral("The server sent a response that is too large.");
        }
        Q_UNREACHABLE();
    }

private:
    Kind m_kind;
};

} // namespace platform
