// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

namespace setup {

/// Whether it is an address of this machine itself.
inline bool isLoopback(const QUrl& address) {
    return address.host() == QLatin1String("127.0.0.1");
}

/// Whether something may be fetched from there: through a secure connection, or from this machine.
inline bool isTrusted(const QUrl& address) {
    return address.isValid() && !address.host().isEmpty() && address.userInfo().isEmpty() &&
           (address.scheme() == QLatin1String("https") ||
            (address.scheme() == QLatin1String("http") && isLoopback(address)));
}

/// Whether a server may send on to that address: nobody else's leads back to this machine.
inline bool mayFollow(const QUrl& from, const QUrl& to) {
    return isTrusted(to) && isLoopback(from) == isLoopback(to);
}

} // namespace setup
