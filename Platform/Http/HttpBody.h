// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Task.h"
#include "Platform/Http/HttpExchangeOwner.h"
#include "Platform/Http/HttpMessages.h"
#include "Platform/Http/LineSplitter.h"

#include <optional>

namespace platform {

/// A response whose head has arrived and whose body is read as it comes, by one task at a time, on
/// any executor. Destroying it closes the connection.
class HttpBody {
public:
    /// The most that one line may hold before its end; a longer one fails as TooLarge.
    static constexpr qsizetype maximumLineLength = 64 * 1024 * 1024;

    explicit HttpBody(HttpExchangeOwner::Opened opened);
    HttpBody(HttpBody&&) noexcept = default;

    const HttpHead& head() const { return m_head; }
    int status() const { return m_head.status; }

    class NextLineAwaiter {
    public:
        explicit NextLineAwaiter(HttpBody& body)
            : m_body(body) {}

        bool await_ready() { return m_body.m_lines.hasLine(); }
        template <class Promise>
        bool await_suspend(std::coroutine_handle<Promise> awaiting) {
            m_fill.emplace(m_body.fill());
            return m_fill->operator co_await().await_suspend(awaiting);
        }
        std::optional<QByteArray> await_resume() {
            if (m_fill)
                m_fill->operator co_await().await_resume();
            return m_body.m_lines.takeLine();
        }

    private:
        HttpBody& m_body;
        std::optional<Task<void>> m_fill;
    };

    /// `co_await body.nextLine()`: the next line without its end (LF, CR LF or CR), as soon as that
    /// has come; what follows the last line end is a line too, unless it is nothing. None at the
    /// end of the body. Does not suspend while lines are waiting. Throws HttpError.
    NextLineAwaiter nextLine() { return NextLineAwaiter(*this); }

private:
    Task<void> fill();

    HttpHead m_head;
    HttpExchangeOwner m_exchange;
    LineSplitter m_lines;
    bool m_hasEnded = false;
};

} // namespace platform
