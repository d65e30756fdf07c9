// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpEndpoint.h"
#include "Platform/Http/HttpMessages.h"
#include "Platform/Http/LineSplitter.h"
#include "Platform/Http/NetworkThread.h"

#include <memory>
#include <optional>

namespace platform {

/// A response whose head has arrived and whose body is read as it comes, by one task at a time.
/// Destroying it closes the connection. It lives on the network thread, as do its tasks, which
/// throw HttpError. A task that is cancelled while it waits for the server closes the connection
/// and throws CancellationError.
class HttpBody {
public:
    /// The most that one line may hold before its end; a longer one fails as TooLarge.
    static constexpr qsizetype maximumLineLength = 64 * 1024 * 1024;

    /// Sends the request over a connection of its own and waits for the head of the response.
    static Task<HttpBody> open(NetworkThread& network, HttpEndpoint endpoint, HttpRequest request);

    HttpBody(HttpBody&&) noexcept = default;
    ~HttpBody();

    int status() const;

    /// The next bytes, as soon as there are any; none at the end of the body. What came before a
    /// fault comes before its error.
    Task<QByteArray> nextBytes();

    /// The next line without its end (LF, CR LF or CR), as soon as that has come; what follows the
    /// last line end is a line too, unless it is nothing. None at the end of the body. Does not
    /// suspend while lines are waiting.
    Task<std::optional<QByteArray>> nextLine();

private:
    struct Connection;
    explicit HttpBody(std::shared_ptr<Connection> connection);
    Task<void> receive();

    std::shared_ptr<Connection> m_connection; // null once moved from
    LineSplitter m_lines;
    bool m_hasEnded = false;
};

} // namespace platform
