// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpEndpoint.h"

namespace platform {

HttpEndpoint::HttpEndpoint(quint16 port, QString path)
    : m_port(port)
    , m_path(std::move(path)) {}

HttpEndpoint HttpEndpoint::loopback(quint16 port) {
    return {port, QString()};
}

HttpEndpoint HttpEndpoint::unixSocket(const QString& path) {
    return {0, path};
}

QByteArray HttpEndpoint::host() const {
    if (isUnixSocket())
        return "localhost";
    return "127.0.0.1:" + QByteArray::number(m_port);
}

} // namespace platform
