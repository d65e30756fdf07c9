// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UrlOpener.h"

#include <QUrlQuery>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

bool isWebPage(const QUrl& url) {
    return (url.scheme() == u"http" || url.scheme() == u"https") && !url.host().isEmpty();
}

/// Some mail programs attach a file that the address names. Nobody sees that when following a link.
QUrl withoutAttachments(QUrl mail) {
    const QUrlQuery query(mail);
    QUrlQuery kept;
    for (const auto& [name, value] : query.queryItems(QUrl::FullyEncoded)) {
        const QString plain = QUrl::fromPercentEncoding(name.toUtf8());
        if (!plain.startsWith(u"attach"_s, Qt::CaseInsensitive))
            kept.addQueryItem(name, value);
    }
    mail.setQuery(kept.isEmpty() ? QString() : kept.query(QUrl::FullyEncoded), QUrl::StrictMode);
    return mail;
}

} // namespace

bool UrlOpener::open(const QUrl& url) const {
    if (!url.isValid())
        return false;
    if (isWebPage(url))
        return m_open(url);
    if (url.scheme() == u"mailto")
        return m_open(withoutAttachments(url));
    return false;
}

} // namespace platform
