// SPDX-License-Identifier: MIT
#include "Platform/Http/HttpClient.h"

#include "Platform/Http/HttpError.h"

namespace platform {

namespace {

Task<HttpResponse> readWhole(Task<HttpBody> opening) {
    HttpBody body = co_await opening;
    HttpResponse response{body.status(), {}};
    while (true) {
        const QByteArray bytes = co_await body.nextBytes();
        if (bytes.isEmpty())
            co_return response;
        response.body += bytes;
        if (response.body.size() > HttpClient::maximumBodySize)
            throw HttpError(HttpError::Kind::TooLarge);
    }
}

} // namespace

Task<HttpResponse> HttpClient::data(HttpRequest request) const {
    return readWhole(bytes(std::move(request)));
}

} // namespace platform
