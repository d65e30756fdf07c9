// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

/// Where a server listens: a port of this machine's IPv4 loopback address, or a Unix socket.
/// Another machine cannot be expressed.
class HttpEndpoint {
public:
    /// A TCP port on 127.0.0.1.
    static HttpEndpoint loopback(quint16 port) { return {port, QString()}; }
    /// The Unix socket at this path.
    static HttpEndpoint unixSocket(const QString& path) { return {0, path}; }

    bool isUnixSocket() const { return !m_path.isEmpty(); }
    quint16 port() const { return m_port; }
    const QString& path() const { return m_path; }

private:
    HttpEndpoint(quint16 port, QString path)
        : m_port(port)
        , m_path(std::move(path)) {}

    quint16 m_port;
    QString m_path;
};

} // namespace platform
