// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpResponseParser.h"

#include "Platform/Http/HttpError.h"

#include <boost/beast/http/parser.hpp>

namespace platform {

namespace beast = boost::beast;
namespace http = boost::beast::http;
using beast::error_code;

namespace {

/// A body as the library wants it described: bytes that are taken out again and again.
struct TakenBody {
    struct value_type {
        QByteArray bytes; // not taken yet
        bool hasBegun = false;
    };

    class reader {
    public:
        template <class Header>
        reader(Header&, value_type& body)
            : m_body(body) {}
        void init(const boost::optional<std::uint64_t>&, error_code& error) { error = {}; }
        std::size_t put(beast::net::const_buffer piece, error_code& error) {
            error = {};
            m_body.bytes.append(static_cast<const char*>(piece.data()),
                                static_cast<qsizetype>(piece.size()));
            m_body.hasBegun = true;
            return piece.size();
        }
        void finish(error_code& error) { error = {}; }

    private:
        value_type& m_body;
    };
};

} // namespace

struct HttpResponseParser::Parser : http::response_parser<TakenBody> {
    Parser() {
        header_limit(maximumHeadSize);
        // Unlimited on purpose: who reads the body knows how much of it to take.
        body_limit(boost::none);
        eager(true);
    }
};

HttpResponseParser::HttpResponseParser()
    : m_parser(std::make_unique<Parser>()) {}

HttpResponseParser::~HttpResponseParser() = default;

/// The library takes the line "0" for the end of all chunks and then trips over fewer than five
/// bytes if no chunk has come before it. Nothing is lost by waiting: with them such a body is not
/// complete.
bool HttpResponseParser::isOnHold(QByteArrayView unparsed) const {
    return m_parser->is_header_done() && m_parser->chunked() && !m_parser->get().body().hasBegun &&
           unparsed.size() < 5 && unparsed.startsWith('0');
}

void HttpResponseParser::append(QByteArrayView bytes) {
    m_unparsed.append(bytes);
    QByteArrayView rest = m_unparsed;
    while (!rest.isEmpty() && !isComplete() && !isOnHold(rest)) {
        error_code error;
        const auto count =
            m_parser->put({rest.data(), static_cast<std::size_t>(rest.size())}, error);
        rest = rest.sliced(static_cast<qsizetype>(count));
        if (error == http::error::need_more)
            break;
        if (error)
            throw HttpError(error == http::error::header_limit ? HttpError::Kind::TooLarge
                                                               : HttpError::Kind::BadResponse);
        if (status().value_or(200) / 100 == 1)
            m_parser = std::make_unique<Parser>();
    }
    m_unparsed.remove(0, m_unparsed.size() - rest.size());
    // What waits for more input is a piece of the head or the line before a chunk.
    if (m_unparsed.size() > maximumHeadSize && !isComplete())
        throw HttpError(HttpError::Kind::TooLarge);
}

void HttpResponseParser::finish() {
    if (isComplete())
        return;
    error_code error;
    if (m_parser->is_header_done())
        m_parser->put_eof(error);
    if (!m_parser->is_done())
        throw HttpError(HttpError::Kind::ConnectionLost);
}

std::optional<int> HttpResponseParser::status() const {
    if (!m_parser->is_header_done())
        return std::nullopt;
    return static_cast<int>(m_parser->get().result_int());
}

QByteArray HttpResponseParser::takeBody() {
    return std::exchange(m_parser->get().body().bytes, {});
}

bool HttpResponseParser::isComplete() const {
    return m_parser->is_done();
}

} // namespace platform
