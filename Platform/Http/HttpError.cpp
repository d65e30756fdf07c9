// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpError.h"

namespace platform {

QString HttpError::errorDescription() const {
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

} // namespace platform
