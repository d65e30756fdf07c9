// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpResponseParser.h"

#include "Platform/Http/HttpError.h"

#include <boost/beast/http/basic_parser.hpp>

namespace platform {

namespace beast = boost::beast;
namespace http = boost::beast::http;
using beast::error_code;

/// The parser of the library, with its results kept as the types of this folder.
class HttpResponseParser::Parser final : public http::basic_parser<false> {
public:
    Parser() {
        header_limit(maximumHeadSize);
        // Unlimited on purpose: who reads the body knows how much of it to take.
        body_limit(boost::none);
        eager(true);
    }

    HttpHead head;
    QByteArray body;

protected:
    void on_request_impl(http::verb, beast::string_view, beast::string_view, int,
                         error_code&) override {}
    void on_response_impl(int code, beast::string_view, int, error_code&) override {
        head.status = code;
    }
    void on_field_impl(http::field, beast::string_view name, beast::string_view value,
                       error_code&) override {
        // Fields behind a chunked body are no part of the head.
        if (!is_header_done())
            head.headers.append({bytes(name), bytes(value)});
    }
    void on_header_impl(error_code&) override {}
    void on_body_init_impl(const boost::optional<std::uint64_t>&, error_code&) override {}
    std::size_t on_body_impl(beast::string_view piece, error_code&) override {
        body.append(piece.data(), static_cast<qsizetype>(piece.size()));
        return piece.size();
    }
    void on_chunk_header_impl(std::uint64_t, beast::string_view, error_code&) override {}
    std::size_t on_chunk_body_impl(std::uint64_t, beast::string_view piece,
                                   error_code& error) override {
        return on_body_impl(piece, error);
    }
    void on_finish_impl(error_code&) override {}

private:
    static QByteArray bytes(beast::string_view text) {
        return {text.data(), static_cast<qsizetype>(text.size())};
    }
};

HttpResponseParser::HttpResponseParser()
    : m_parser(std::make_unique<Parser>()) {}

HttpResponseParser::~HttpResponseParser() = default;

void HttpResponseParser::append(QByteArrayView bytes) {
    m_unparsed.append(bytes);
    parse();
}

void HttpResponseParser::parse() {
    qsizetype taken = 0;
    while (taken < m_unparsed.size() && !isComplete()) {
        error_code error;
        const auto left = static_cast<std::size_t>(m_unparsed.size() - taken);
        const auto count = m_parser->put({m_unparsed.constData() + taken, left}, error);
        taken += static_cast<qsizetype>(count);
        if (error == http::error::need_more)
            break;
        if (error)
            throw HttpError(error == http::error::header_limit ? HttpError::Kind::TooLarge
                                                               : HttpError::Kind::BadResponse);
        const bool isInterim = m_parser->is_header_done() && m_parser->head.status / 100 == 1;
        if (isInterim)
            m_parser = std::make_unique<Parser>();
    }
    m_unparsed.remove(0, taken);
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

const HttpHead* HttpResponseParser::head() const {
    return m_parser->is_header_done() ? &m_parser->head : nullptr;
}

QByteArray HttpResponseParser::takeBody() {
    return std::exchange(m_parser->body, {});
}

bool HttpResponseParser::isComplete() const {
    return m_parser->is_done();
}

} // namespace platform
